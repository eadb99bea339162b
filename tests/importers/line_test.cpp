#include "importers/line.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

// An item as the export tables list it: the time as written, who, what, and
// a call's length.
std::string shown(const Evidence& e) {
    std::string s = format(e.date, "yyyy-MM-dd HH:mm") + " " +
                    (e.isSystem() ? "note" : e.sender.str()) + ": " + e.text;
    auto length = e.details().duration;
    if (e.kind == ItemKind::call) s += " " + (length ? duration(*length) : "(no length)");
    return s;
}

// Exports of the phone app (tabs) and the PC app (spaces) in each language.
TEST(Line, ReadsEachLanguageFromThePhoneAndThePC) {
    const std::tuple<const char*, std::string, std::string, std::vector<std::string>> cases[] = {
        {"Japanese phone",
         "[LINE] Sam Leeとのトーク履歴\n保存日時：2023/05/02 午後3:41\n\n2023/03/04(土)\n"
         "午前9:07\tSam Lee\t集合は何時？\n"
         "午後04:52\tAlex Morgan\t\"駅で\n10:30 Sam Lee も来る？\"\n"
         "午後5:00\tSam Leeがメッセージの送信を取り消しました\n"
         "午後11:58\tAlex Morgan\t☎ 通話時間 0:45\n"
         "2023/03/05(日)\n午前0:15\tSam Lee\tおやすみ\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: 集合は何時？",
          "2023-03-04 16:52 Alex Morgan: 駅で\n10:30 Sam Lee も来る？",
          "2023-03-04 17:00 note: Sam Leeがメッセージの送信を取り消しました",
          "2023-03-04 23:58 Alex Morgan: Call 45 s", "2023-03-05 00:15 Sam Lee: おやすみ"}},
        {"Japanese PC, a group",
         "[LINE] 家族のトーク履歴\n2023.3.4 土曜日\n午前9:07 Sam Lee おはよう\n"
         "午前9:08 Alex Morgan おはよう！\n午後1:00 Sam Lee 昼ごはんは？\n"
         "午後1:05 Alex Morgan Sam Lee の分も買う\n"
         "午後2:00 Alex Morganがグループを退会しました。\n",
         "家族",
         {"2023-03-04 09:07 Sam Lee: おはよう", "2023-03-04 09:08 Alex Morgan: おはよう！",
          "2023-03-04 13:00 Sam Lee: 昼ごはんは？",
          "2023-03-04 13:05 Alex Morgan: Sam Lee の分も買う",
          "2023-03-04 14:00 note: Alex Morganがグループを退会しました。"}},
        {"Chinese phone",
         "[LINE] 與Sam Lee的聊天記錄\n儲存日期：2023/05/02 下午3:41\n\n2023/03/04（六）\n"
         "上午9:07\tSam Lee\t早安\n下午12:30\tAlex Morgan\t午餐吃什麼？\n還是晚點再說\n"
         "下午1:00\tSam Lee已收回訊息\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: 早安",
          "2023-03-04 12:30 Alex Morgan: 午餐吃什麼？\n還是晚點再說",
          "2023-03-04 13:00 note: Sam Lee已收回訊息"}},
        {"Chinese PC",
         "[LINE] 与Sam Lee的聊天记录\n2023.3.4 星期六\n9:07 Sam Lee 早上好\n9:08 Alex Morgan 早\n"
         "今天见面吗\n9:10 Sam Lee 好的\n9:12 Alex Morgan 下午见\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: 早上好", "2023-03-04 09:08 Alex Morgan: 早\n今天见面吗",
          "2023-03-04 09:10 Sam Lee: 好的", "2023-03-04 09:12 Alex Morgan: 下午见"}},
        {"Korean phone",
         "[LINE] Sam Lee님과의 대화\n저장한 날짜 : 2023/05/02 오후 3:41\n\n2023/03/04(토)\n"
         "오전 9:07\tSam Lee\t안녕\n오후 12:05\tAlex Morgan\t점심 먹었어?\n"
         "오후 1:00\tSam Lee\tSam Lee님이 메시지를 취소했습니다\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: 안녕", "2023-03-04 12:05 Alex Morgan: 점심 먹었어?",
          "2023-03-04 13:00 note: Sam Lee님이 메시지를 취소했습니다"}},
        {"Korean PC, no title, names that begin alike",
         "2023.3.4 토요일\n오전9:07 Kim Minji 안녕\n오전9:10 Kim Jisoo 잘 잤어?\n"
         "오후 12:00 Kim Minji 점심 먹자\n오후 12:01 Kim Jisoo 좋아\n"
         "오후 12:02 Kim Minji님이 메시지를 취소했습니다\n",
         "",
         {"2023-03-04 09:07 Kim Minji: 안녕", "2023-03-04 09:10 Kim Jisoo: 잘 잤어?",
          "2023-03-04 12:00 Kim Minji: 점심 먹자", "2023-03-04 12:01 Kim Jisoo: 좋아",
          "2023-03-04 12:02 note: Kim Minji님이 메시지를 취소했습니다"}},
        {"Thai phone",
         "[LINE] ประวัติการแชทกับ Sam Lee\nบันทึกเมื่อ: 2023/05/02 15:41\n\n2023/03/04(ส.)\n"
         "09:07\tSam Lee\tสวัสดี\n21:15\tAlex Morgan\tฝันดี\nนอนก่อนนะ\n"
         "21:20\tSam Lee ยกเลิกข้อความแล้ว\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: สวัสดี", "2023-03-04 21:15 Alex Morgan: ฝันดี\nนอนก่อนนะ",
          "2023-03-04 21:20 note: Sam Lee ยกเลิกข้อความแล้ว"}},
        {"Thai PC",
         "[LINE] ประวัติการแชทกับ Sam Lee\n2023.3.4 วันเสาร์\n09:07 Sam Lee สวัสดี\n"
         "09:08 Alex Morgan ครับ\n09:09 Alex Morgan ครับ\n"
         "09:10 Sam Lee ยกเลิกข้อความแล้ว\n",
         "Sam Lee",
         {"2023-03-04 09:07 Sam Lee: สวัสดี", "2023-03-04 09:08 Alex Morgan: ครับ",
          "2023-03-04 09:09 Alex Morgan: ครับ", "2023-03-04 09:10 note: Sam Lee ยกเลิกข้อความแล้ว"}},
        // Both names hold spaces, texts begin with a name's words, and a
        // line of a message begins with a time.
        {"English PC, no title",
         "2023.03.04 Saturday\n21:00 Sam Lee Lee's cafe at nine?\n"
         "21:01 Alex Morgan Morgan's car is free\nand has snacks\n9:30 works better\n"
         "21:02 Sam Lee Alex Morgan drives then\n21:03 Sam Lee unsent a message.\n"
         "21:05 Alex Morgan \u260E Call time 0:45:10\n",
         "",
         {"2023-03-04 21:00 Sam Lee: Lee's cafe at nine?",
          "2023-03-04 21:01 Alex Morgan: Morgan's car is free\nand has snacks\n9:30 works better",
          "2023-03-04 21:02 Sam Lee: Alex Morgan drives then",
          "2023-03-04 21:03 note: Sam Lee unsent a message.",
          "2023-03-04 21:05 Alex Morgan: Call 45 min 10 s"}},
        // Phone lines one by one, each line a case of its own.
        {"Phone, twelve-hour times with and without a space",
         "Sat, 2025/06/14\n09:05 PM\tSam\tA\n09:05PM\tSam\tB\n12:30 am\tSam\tC\n"
         "9:05\tSam\tD\n",
         "",
         {"2025-06-14 21:05 Sam: A", "2025-06-14 21:05 Sam: B", "2025-06-14 00:30 Sam: C",
          "2025-06-14 09:05 Sam: D"}},
        {"Phone, weekday behind the day and later days",
         "[LINE] Sam & Alex\n2025/06/14(Sat)\n23:59\tSam\tLate\n"
         "2025.06.15 \u65E5\u66DC\u65E5\n00:01\tAlex\tEarly\n",
         "Sam & Alex",
         {"2025-06-14 23:59 Sam: Late", "2025-06-15 00:01 Alex: Early"}},
        {"Phone, a message before the first day, quotes, saved-on and empty lines",
         "[LINE] Chat history with Sam\n08:00\tSam\tToo early\nSat, 2025/06/14\n"
         "09:00\tAlex\t\"Quoted\"\n10:00\tSam\tOne\n\nmore\nSaved on: 2025/07/01 10:00\n\n",
         "Sam",
         {"2025-06-14 09:00 Alex: \"Quoted\"",
          "2025-06-14 10:00 Sam: One\nmore\nSaved on: 2025/07/01 10:00"}},
        {"Phone, call notices",
         "Sat, 2025/06/14\n10:00\tSam\t\u260E Missed call\n10:01\tSam\tCall time 3:05\n"
         "10:02\tSam\tCALL TIME 3:05\n10:03\tSam\tCall time: 3:05\n10:04\tSam\tCall me at 3:05\n",
         "",
         {"2025-06-14 10:00 Sam: Missed call 0 s", "2025-06-14 10:01 Sam: Call 3 min 5 s",
          "2025-06-14 10:02 Sam: Call 3 min 5 s", "2025-06-14 10:03 Sam: Call 3 min 5 s",
          "2025-06-14 10:04 Sam: Call me at 3:05"}},
    };
    for (const auto& [name, text, title, items] : cases) {
        SCOPED_TRACE(name);
        LineChat chat = line(text, "f");
        std::vector<std::string> read;
        for (const Evidence& e : chat.items)
            read.push_back(shown(e));
        EXPECT_EQ(chat.title, title);
        EXPECT_EQ(read, items);
    }
}

}  // namespace
}  // namespace kinfolio::Importer
