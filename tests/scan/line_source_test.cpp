#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

// An export is named by its title, else by its first two senders; a call
// counts as a call and a note (a message taken back) as no message.
TEST(LineSource, ExportsBecomeLineSourcesAndRefusalsSayWhy) {
    ScanResult r = testing::scanFiles({
        {"[LINE] Chat with Sam Lee.txt",
         "[LINE] Chat history with Sam Lee\nSaved on: 2025/07/01 10:00\n\nSat, 2025/06/14\n"
         "09:15\tSam Lee\tGood morning!\n09:20\tAlex Morgan\tSee you.\n"
         "21:00\tAlex Morgan\t\u260E Call time 0:45:10\n"},
        {"[LINE] Sam Leeとのトーク.txt",
         "[LINE] Sam Leeとのトーク履歴\n保存日時：2023/05/02 午後3:41\n\n2023/03/04(土)\n"
         "午前9:07\tSam Lee\tおはよう\n午後04:52\tAlex Morgan\tまたね\n"
         "午後5:00\tSam Leeがメッセージの送信を取り消しました\n"},
        {"chat.txt", "2025/06/14(Sat)\n09:15\tSam Lee\tHi\n09:16\tAlex Morgan\tHello\n"},
        {"broken.txt", "[LINE] Chat history with Sam\nSat, 2025/06/14\n25:00\tSam\tHi\n"},
        {"empty.txt", "[LINE] Chat history with Sam\nSaved on: 2025/07/01 10:00\n"},
    });
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "[LINE] Chat with Sam Lee.txt | Sam Lee | LINE · 2 messages · 1 call · Jun 2025",
                  "[LINE] Sam Leeとのトーク.txt | Sam Lee | LINE · 2 messages · Mar 2023",
                  "chat.txt | Sam Lee & Alex Morgan | LINE · 2 messages · Jun 2025",
                  "broken.txt | Looks like a LINE chat, but: Could not read the time on line 3.",
                  "empty.txt | Looks like a LINE chat, but: No LINE messages found."}));
    for (const Source& s : r.sources) {
        EXPECT_EQ(s.kind, SourceKind::line);
        EXPECT_EQ(s.id, s.files.at(0).sha256);
        EXPECT_EQ(s.items.at(0).fileID, s.id);
        EXPECT_TRUE(s.notes.empty());
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
