#include <gtest/gtest.h>

#include "scan/scanner.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

TEST(KakaoTalkSource, PhoneExportMacSpreadsheetAndOldSpreadsheet) {
    TempFolder dir;
    dir.write("KakaoTalkChats.txt",
              "Sam Lee 님과 카카오톡 대화\n저장한 날짜 : 2023-03-10 14:00:00\n\n"
              "2023년 3월 4일 토요일\n2023년 3월 4일 오후 6:12, Sam Lee : 안녕\n"
              "2023년 3월 4일 오후 6:13, 이수진님이 들어왔습니다.\n"
              "2023년 4월 1일 오전 9:00, 이수진 : 좋은 아침\n");
    dir.write("KakaoTalk_Chat_Sam Lee.csv",
              "Date,User,Message\n2023-03-04 18:12:00,Sam Lee,Hi\n2023-03-05 09:00:00,Alex,Hey\n");
    dir.write("Kontakt.csv", "Datum,Absender,Nachricht\n04.03.2023 18:12,M\xFCller,5 \x80\n");
    dir.write("Broken.txt", "KakaoTalk Chats with Sam\nDate Saved : 2023-03-10 14:00\n");
    std::string before = testing::folderFingerprint(dir.path());
    ScanResult result = scan(dir.path(), DateOrder::dayFirst, "UTC");
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);

    struct Expected {
        std::string name;
        SourceKind kind;
        std::string detail;
    };
    const Expected expected[] = {
        {"Kontakt", SourceKind::chatCSV, "1 message \u00B7 Mar 2023"},
        {"Sam Lee", SourceKind::kakaoTalk,
         "KakaoTalk \u00B7 2 messages \u00B7 Mar 2023 \u2013 Apr 2023"},
        {"Sam Lee & Alex", SourceKind::kakaoTalk, "KakaoTalk \u00B7 2 messages \u00B7 Mar 2023"},
    };
    ASSERT_EQ(result.sources.size(), std::size(expected));
    for (const auto& want : expected) {
        const Source* s = testing::sourceNamed(result, want.name);
        ASSERT_TRUE(s) << want.name;
        EXPECT_EQ(s->kind, want.kind) << want.name;
        EXPECT_EQ(s->detail, want.detail) << want.name;
    }
    const Evidence& old = testing::sourceNamed(result, "Kontakt")->items.at(0);
    EXPECT_EQ(old.sender + ": " + old.text, "M\u00FCller: 5 \u20AC");
    EXPECT_EQ(
        result.skipped,
        (std::vector<SkippedFile>{
            {"Broken.txt", "Looks like a KakaoTalk chat, but: No KakaoTalk messages found."}}));
}

}  // namespace
}  // namespace kinfolio::Scanner
