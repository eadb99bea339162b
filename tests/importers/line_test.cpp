#include "importers/line.h"

#include <gtest/gtest.h>

#include "model/calendar.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

const std::string kSample =
    "[LINE] Chat history with Sam Lee\n"
    "Saved on: 2025/07/01 10:00\n"
    "\n"
    "Sat, 2025/06/14\n"
    "09:15\tSam Lee\tGood morning! Flight is on time.\n"
    "09:20\tAlex Morgan\t\"See you at gate 3.\n"
    "I'll bring coffee.\"\n"
    "21:00\tAlex Morgan\t\u260E Call time 0:45:10\n";

std::string written(Instant t) {
    return format(t, "yyyy-MM-dd HH:mm");
}

// One message under a day header, for the cases that only vary one line.
LineChat chatWith(const std::string& dayHeader, const std::string& messageLine) {
    return line("[LINE] Chat history with Sam\n" + dayHeader + "\n" + messageLine + "\n", "f");
}

TEST(LineDay, ReadsEnglishJapaneseAndChineseHeaders) {
    EXPECT_EQ(written(*lineDay("Sat, 2025/06/14")), "2025-06-14 00:00");
    EXPECT_EQ(written(*lineDay("2025/06/14(Sat)")), "2025-06-14 00:00");
    EXPECT_EQ(written(*lineDay("2025.06.14 \u571F\u66DC\u65E5")), "2025-06-14 00:00");
    EXPECT_EQ(written(*lineDay("2025/6/4 \u661F\u671F\u4E09")), "2025-06-04 00:00");
    EXPECT_EQ(written(*lineDay("Saturday 2025-06-14")), "2025-06-14 00:00");
}

TEST(LineDay, RefusesOtherLinesAndImpossibleDays) {
    EXPECT_FALSE(lineDay("2025/13/01"));
    EXPECT_FALSE(lineDay("2025/02/30"));
    EXPECT_FALSE(lineDay("09:15\tSam\t2025/06/14"));
    EXPECT_FALSE(lineDay("Saved on: 2025/07/01 10:00"));
    EXPECT_FALSE(lineDay(""));
}

TEST(LineDay, FullWidthDigitsAreReadNotACrash) {
    EXPECT_EQ(written(*lineDay("\uFF12\uFF10\uFF12\uFF15/\uFF10\uFF16/\uFF11\uFF14")),
              "2025-06-14 00:00");
}

TEST(Line, ReadsTheSampleExport) {
    LineChat chat = line(kSample, "abc");
    EXPECT_EQ(chat.title, "Sam Lee");
    ASSERT_EQ(chat.items.size(), 3u);

    const Evidence& first = chat.items[0];
    EXPECT_EQ(first.kind, ItemKind::message);
    EXPECT_EQ(first.position, 5);
    EXPECT_EQ(first.sender, "Sam Lee");
    EXPECT_EQ(first.text, "Good morning! Flight is on time.");
    EXPECT_EQ(written(first.date), "2025-06-14 09:15");
    EXPECT_EQ(first.fileID, "abc");
    EXPECT_FALSE(first.dateIsEstimated);
    EXPECT_FALSE(first.details().duration);

    const Evidence& second = chat.items[1];
    EXPECT_EQ(second.position, 6);
    EXPECT_EQ(second.text, "See you at gate 3.\nI'll bring coffee.");
    EXPECT_EQ(written(second.date), "2025-06-14 09:20");

    const Evidence& call = chat.items[2];
    EXPECT_EQ(call.kind, ItemKind::call);
    EXPECT_EQ(call.position, 8);
    EXPECT_EQ(call.sender, "Alex Morgan");
    EXPECT_EQ(call.text, "Call");
    EXPECT_EQ(call.details().duration, 2710.0);
    EXPECT_EQ(written(call.date), "2025-06-14 21:00");
}

TEST(Line, WindowsLineBreaksAndByteOrderMarkReadTheSame) {
    std::string crlf;
    for (char c : kSample)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(line("\uFEFF" + crlf, "abc").items, line(kSample, "abc").items);
}

TEST(Line, TwelveHourTimesWithAndWithoutSpace) {
    EXPECT_EQ(written(chatWith("Sat, 2025/06/14", "09:05 PM\tSam\tHi").items[0].date),
              "2025-06-14 21:05");
    EXPECT_EQ(written(chatWith("Sat, 2025/06/14", "09:05PM\tSam\tHi").items[0].date),
              "2025-06-14 21:05");
    EXPECT_EQ(written(chatWith("Sat, 2025/06/14", "12:30 am\tSam\tHi").items[0].date),
              "2025-06-14 00:30");
    EXPECT_EQ(written(chatWith("Sat, 2025/06/14", "9:05\tSam\tHi").items[0].date),
              "2025-06-14 09:05");
}

TEST(Line, DayHeadersWithWeekdayBehindSetTheDay) {
    EXPECT_EQ(written(chatWith("2025/06/14(Sat)", "10:00\tSam\tHi").items[0].date),
              "2025-06-14 10:00");
    EXPECT_EQ(written(chatWith("2025.06.15 \u65E5\u66DC\u65E5", "10:00\tSam\tHi").items[0].date),
              "2025-06-15 10:00");
}

TEST(Line, LaterDayHeadersMoveTheDay) {
    LineChat chat =
        line("Sat, 2025/06/14\n23:59\tSam\tLate\nSun, 2025/06/15\n00:01\tAlex\tEarly\n", "f");
    ASSERT_EQ(chat.items.size(), 2u);
    EXPECT_EQ(chat.title, "");
    EXPECT_EQ(written(chat.items[1].date), "2025-06-15 00:01");
    EXPECT_EQ(chat.items[1].position, 4);
}

TEST(Line, OneLineQuotedMessageKeepsItsQuotes) {
    EXPECT_EQ(chatWith("Sat, 2025/06/14", "10:00\tSam\t\"Quoted\"").items[0].text, "\"Quoted\"");
}

TEST(Line, MessageLineBeforeTheFirstDayHeaderIsIgnored) {
    LineChat chat = line(
        "[LINE] Chat history with Sam\n08:00\tSam\tToo early\nSat, "
        "2025/06/14\n09:00\tAlex\tFirst\n",
        "f");
    ASSERT_EQ(chat.items.size(), 1u);
    EXPECT_EQ(chat.items[0].text, "First");
    EXPECT_EQ(chat.items[0].position, 4);
}

TEST(Line, SavedOnAfterTheFirstMessageContinuesIt) {
    LineChat chat = line("Sat, 2025/06/14\n09:00\tSam\tHello\nSaved on: 2025/07/01 10:00\n\n", "f");
    ASSERT_EQ(chat.items.size(), 1u);
    EXPECT_EQ(chat.items[0].text, "Hello\nSaved on: 2025/07/01 10:00");
}

TEST(Line, EmptyLinesAreNotAppended) {
    LineChat chat = line("Sat, 2025/06/14\n09:00\tSam\tOne\n\nmore\n", "f");
    EXPECT_EQ(chat.items[0].text, "One\nmore");
}

TEST(Line, CallNotices) {
    auto call = [](const std::string& text) {
        return chatWith("Sat, 2025/06/14", "10:00\tSam\t" + text).items[0];
    };
    Evidence missed = call("\u260E Missed call");
    EXPECT_EQ(missed.kind, ItemKind::call);
    EXPECT_EQ(missed.text, "Missed call");
    EXPECT_EQ(missed.details().duration, 0.0);
    EXPECT_EQ(call("Call time 3:05").details().duration, 185.0);
    EXPECT_EQ(call("CALL TIME 3:05").text, "Call");
    EXPECT_EQ(call("Call time: 3:05").details().duration, 185.0);
    EXPECT_EQ(call("Call me at 3:05").kind, ItemKind::message);
}

TEST(Line, TitleWithoutTheChatHistoryWords) {
    EXPECT_EQ(line("[LINE] Sam & Alex\nSat, 2025/06/14\n09:00\tSam\tHi\n", "f").title,
              "Sam & Alex");
}

TEST(Line, UnreadableTimeNamesItsLine) {
    EXPECT_EQ(testing::errorOf([] { chatWith("Sat, 2025/06/14", "25:00\tSam\tHi"); }),
              "Could not read the time on line 3.");
    EXPECT_THROW(chatWith("Sat, 2025/06/14", "13:00 PM\tSam\tHi"), EvidenceError);
}

TEST(Line, NoMessagesIsRefused) {
    for (const char* text : {"", "[LINE] Chat history with Sam\nSaved on: 2025/07/01 10:00\n",
                             "[LINE] Chat history with Sam\n09:00\tSam\tNo day yet\n"}) {
        EXPECT_EQ(testing::errorOf([&] { line(text, "f"); }), "No LINE messages found.") << text;
    }
}

}  // namespace
}  // namespace kinfolio::Importer
