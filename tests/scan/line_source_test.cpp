#include <gtest/gtest.h>

#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

TEST(LineSource, ExportBecomesALineSourceNamedByItsTitle) {
    TempFolder dir;
    dir.write("[LINE] Chat with Sam Lee.txt",
              "[LINE] Chat history with Sam Lee\n"
              "Saved on: 2025/07/01 10:00\n\n"
              "Sat, 2025/06/14\n"
              "09:15\tSam Lee\tGood morning!\n"
              "09:20\tAlex Morgan\tSee you.\n"
              "21:00\tAlex Morgan\t\u260E Call time 0:45:10\n");
    std::string before = testing::folderFingerprint(dir.path());
    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
    EXPECT_TRUE(result.skipped.empty());
    ASSERT_EQ(result.sources.size(), 1u);
    const Source& s = result.sources[0];
    EXPECT_EQ(s.kind, SourceKind::line);
    EXPECT_EQ(s.name, "Sam Lee");
    EXPECT_EQ(s.detail, "LINE \u00B7 2 messages \u00B7 1 call \u00B7 Jun 2025");
    ASSERT_EQ(s.files.size(), 1u);
    EXPECT_EQ(s.files[0].path, "[LINE] Chat with Sam Lee.txt");
    EXPECT_EQ(s.id, s.files[0].sha256);
    ASSERT_EQ(s.items.size(), 3u);
    EXPECT_EQ(s.items[0].fileID, s.id);
    EXPECT_TRUE(s.notes.empty());
}

TEST(LineSource, JapanesePhoneExportIsNamedByItsTitleAndItsNoteIsNoMessage) {
    TempFolder dir;
    dir.write("[LINE] Sam Leeとのトーク.txt",
              "[LINE] Sam Leeとのトーク履歴\n保存日時：2023/05/02 午後3:41\n\n2023/03/04(土)\n"
              "午前9:07\tSam Lee\tおはよう\n午後04:52\tAlex Morgan\tまたね\n"
              "午後5:00\tSam Leeがメッセージの送信を取り消しました\n");
    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    ASSERT_EQ(result.sources.size(), 1u);
    EXPECT_EQ(result.sources[0].name, "Sam Lee");
    // The badge says LINE; the note is not counted as a message.
    EXPECT_EQ(result.sources[0].detail, "LINE \u00B7 2 messages \u00B7 Mar 2023");
}

TEST(LineSource, FileStartingWithADayHeaderIsNamedByItsSenders) {
    TempFolder dir;
    dir.write("chat.txt", "2025/06/14(Sat)\n09:15\tSam Lee\tHi\n09:16\tAlex Morgan\tHello\n");
    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    ASSERT_EQ(result.sources.size(), 1u);
    EXPECT_EQ(result.sources[0].kind, SourceKind::line);
    EXPECT_EQ(result.sources[0].name, "Sam Lee & Alex Morgan");
}

TEST(LineSource, RefusalIsSkippedWithItsReason) {
    TempFolder dir;
    dir.write("broken.txt", "[LINE] Chat history with Sam\nSat, 2025/06/14\n25:00\tSam\tHi\n");
    dir.write("empty.txt", "[LINE] Chat history with Sam\nSaved on: 2025/07/01 10:00\n");
    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(result.sources.empty());
    ASSERT_EQ(result.skipped.size(), 2u);
    EXPECT_EQ(result.skipped[0],
              (SkippedFile{"broken.txt",
                           "Looks like a LINE chat, but: Could not read the time on line 3."}));
    EXPECT_EQ(result.skipped[1],
              (SkippedFile{"empty.txt", "Looks like a LINE chat, but: No LINE messages found."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
