#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

// A phone's export, a Mac's spreadsheet and an old Windows spreadsheet (in
// the legacy code page, read as a plain chat spreadsheet).
TEST(KakaoTalkSource, PhoneExportMacSpreadsheetAndOldSpreadsheet) {
    ScanResult r = testing::scanFiles(
        {{"KakaoTalkChats.txt",
          "Sam Lee 님과 카카오톡 대화\n저장한 날짜 : 2023-03-10 14:00:00\n\n"
          "2023년 3월 4일 토요일\n2023년 3월 4일 오후 6:12, Sam Lee : 안녕\n"
          "2023년 3월 4일 오후 6:13, 이수진님이 들어왔습니다.\n"
          "2023년 4월 1일 오전 9:00, 이수진 : 좋은 아침\n"},
         {"KakaoTalk_Chat_Sam Lee.csv",
          "Date,User,Message\n2023-03-04 18:12:00,Sam Lee,Hi\n2023-03-05 09:00:00,Alex,Hey\n"},
         {"Kontakt.csv",
          "Datum,Absender,Nachricht\n04.03.2023 18:12,M\xFC"
          "ller,5 \x80\n"},
         {"Broken.txt", "KakaoTalk Chats with Sam\nDate Saved : 2023-03-10 14:00\n"}},
        DateOrder::dayFirst);
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "KakaoTalkChats.txt | Sam Lee | KakaoTalk · 2 messages · Mar 2023 – Apr 2023",
                  "KakaoTalk_Chat_Sam Lee.csv | Sam Lee & Alex | KakaoTalk · 2 messages · Mar 2023",
                  "Kontakt.csv | Kontakt | 1 message · Mar 2023",
                  "Broken.txt | Looks like a KakaoTalk chat, but: No KakaoTalk messages found."}));
    EXPECT_EQ(testing::sourceNamed(r, "Sam Lee")->kind, SourceKind::kakaoTalk);
    EXPECT_EQ(testing::sourceNamed(r, "Sam Lee & Alex")->kind, SourceKind::kakaoTalk);
    const Source* old = testing::sourceNamed(r, "Kontakt");
    EXPECT_EQ(old->kind, SourceKind::chatCSV);
    EXPECT_EQ(testing::itemLines(*old), std::vector<std::string>{"2023-03-04 18:12 Müller: 5 €"});
}

}  // namespace
}  // namespace kinfolio::Scanner
