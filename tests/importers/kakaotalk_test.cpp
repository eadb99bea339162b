#include "importers/kakaotalk.h"

#include <gtest/gtest.h>

#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

const std::string kEnglishHead = "KakaoTalk Chats with Sam Lee\nDate Saved : 2023-03-10 14:00\n\n";
const std::string kKoreanHead = "Sam Lee 님과 카카오톡 대화\n저장한 날짜 : 2023-03-10 14:00:00\n\n";

const std::tuple<const char*, std::string, std::string, std::vector<std::string>> kExports[] = {
    {"EnglishAndroid",
     kEnglishHead + "Saturday, March 4, 2023\n6:12pm, March 4, 2023, Sam Lee : Hello\n"
                    "12:05 AM, Mar 5, 2023, Alex Morgan : Still up?\n",
     "Sam Lee",
     {"5 2023-03-04 18:12:00 Sam Lee: Hello", "6 2023-03-05 00:05:00 Alex Morgan: Still up?"}},
    {"EnglishIos",
     kEnglishHead + "Saturday, March 4, 2023\nMar 4, 2023, 6:12 PM, Sam Lee : Note : bring tea\n"
                    "Mar 4, 2023 at 18:30, Alex Morgan : OK\n",
     "Sam Lee",
     {"5 2023-03-04 18:12:00 Sam Lee: Note : bring tea", "6 2023-03-04 18:30:00 Alex Morgan: OK"}},
    {"KoreanAndroid",
     kKoreanHead + "2023년 3월 4일 토요일\n2023년 3월 4일 오후 6:12, Sam Lee : 안녕\n"
                   "2023년 3월 5일 오전 12:30\n2023년 3월 5일 오전 12:30, 이수진 : 잘 자\n",
     "Sam Lee",
     {"5 2023-03-04 18:12:00 Sam Lee: 안녕", "7 2023-03-05 00:30:00 이수진: 잘 자"}},
    {"KoreanIos",
     kKoreanHead + "2023년 3월 4일 토요일\n2023. 3. 4. 오후 12:05, Sam Lee : 점심 먹었어?\n"
                   "2023. 3. 4. 21:40, 이수진 : 응\n",
     "Sam Lee",
     {"5 2023-03-04 12:05:00 Sam Lee: 점심 먹었어?", "6 2023-03-04 21:40:00 이수진: 응"}},
    {"WindowsEnglish",
     "\uFEFFKakaoTalk Chats with Sam Lee\r\nDate Saved : 2023-03-10 14:00\r\n\r\n"
     "--------------- Saturday, March 4, 2023 ---------------\r\n[Sam Lee] [6:12 PM] Hello\r\n"
     "--------------- Sunday, March 5, 2023 ---------------\r\n[Alex Morgan] [9:01 AM] Morning\r\n",
     "Sam Lee",
     {"5 2023-03-04 18:12:00 Sam Lee: Hello", "7 2023-03-05 09:01:00 Alex Morgan: Morning"}},
    {"WindowsKorean",
     kKoreanHead + "--------------- 2023년 3월 4일 토요일 ---------------\n"
                   "[Sam Lee] [오후 6:12] 안녕\n이수진님이 들어왔습니다.\n"
                   "[이수진] [오후 6:15] 반가워\n또 봐\n",
     "Sam Lee",
     {"5 2023-03-04 18:12:00 Sam Lee: 안녕", "6 2023-03-04 18:12:00 note: 이수진님이 들어왔습니다.",
      "7 2023-03-04 18:15:00 이수진: 반가워\n또 봐"}},
    {"SystemLinesWithoutATitle",
     "Mar 4, 2023, 6:10 PM, Sam Lee invited Alex Morgan.\n"
     "Mar 4, 2023, 6:11 PM, Alex Morgan joined this chatroom.\n"
     "Mar 4, 2023, 6:12 PM, Alex Morgan : Hi\n2023. 3. 5. 오전 9:00, Sam Lee님이 나갔습니다.\n",
     "",
     {"1 2023-03-04 18:10:00 note: Sam Lee invited Alex Morgan.",
      "2 2023-03-04 18:11:00 note: Alex Morgan joined this chatroom.",
      "3 2023-03-04 18:12:00 Alex Morgan: Hi",
      "4 2023-03-05 09:00:00 note: Sam Lee님이 나갔습니다."}},
    {"ContinuationLines",
     kEnglishHead + "Mar 4, 2023, 6:12 PM, Sam Lee : First line\nsecond line\n\n"
                    "Sam Lee joined this chatroom.\nMar 4, 2023, 6:13 PM, Alex Morgan : OK\n",
     "Sam Lee",
     {"4 2023-03-04 18:12:00 Sam Lee: First line\nsecond line\nSam Lee joined this chatroom.",
      "8 2023-03-04 18:13:00 Alex Morgan: OK"}},
};

TEST(KakaoTalk, EachFormReadsToMessagesSendersTimesAsWrittenAndContinuations) {
    for (const auto& [name, text, title, items] : kExports) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(looksLikeKakaoTalk(text) || title.empty());
        KakaoTalkChat chat = kakaoTalk(text, "f");
        EXPECT_EQ(chat.title, title);
        EXPECT_EQ(testing::itemLines(chat.items), items);
    }
}

TEST(KakaoTalk, RefusalsNameTheProblem) {
    const std::pair<std::string, std::string> refusals[] = {
        {kEnglishHead, "No KakaoTalk messages found."},
        {kEnglishHead + "Mar 4, 2023, 6:11 PM, Alex joined this chatroom.\n",
         "No KakaoTalk messages found."},
        {kEnglishHead + "Feb 30, 2023, 6:12 PM, Sam : Hi\n", "Could not read the date on line 4."},
        {kKoreanHead + "2023. 3. 4. 오후 13:12, Sam : Hi\n", "Could not read the date on line 4."},
        {kKoreanHead + "[Sam] [오후 6:12] 안녕\n", "Could not read the date on line 4."},
    };
    for (const auto& [text, message] : refusals)
        EXPECT_EQ(testing::errorOf([&] { kakaoTalk(text, "f"); }), message) << text;
}

}  // namespace
}  // namespace kinfolio::Importer
