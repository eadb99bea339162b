#include "importers/csv.h"

#include <gtest/gtest.h>

#include "model/calendar.h"
#include "model/text.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

std::string written(Instant t) {
    return format(t, "yyyy-MM-dd HH:mm:ss");
}

std::string rowsError(const std::string& text) {
    return testing::errorOf([&] { csvRows(text); });
}

std::string csvError(const std::string& text, DateOrder order = DateOrder::dayFirst) {
    return testing::errorOf([&] { csv(text, "f", order); });
}

const std::string kQuilloryHeader = "date_local,direction,sender,text,attachments\n";

TEST(CsvRows, QuotedFieldHoldsCommaDoubledQuoteAndLineBreak) {
    auto rows = csvRows("a,\"x, \"\"y\"\"\r\nz\",b\n");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0], (CsvRow{"a", "x, \"y\"\r\nz", "b"}));
}

TEST(CsvRows, LineBreaksOfEveryKindEndRows) {
    auto rows = csvRows("a,b\r\nc,d\re,f\ng,h");
    EXPECT_EQ(rows, (std::vector<CsvRow>{{"a", "b"}, {"c", "d"}, {"e", "f"}, {"g", "h"}}));
}

TEST(CsvRows, EmptyFieldsAreKeptAndBlankRowsDropped) {
    auto rows = csvRows("a,,\n\n,,\n\"\",\"\"\n,b\n");
    EXPECT_EQ(rows, (std::vector<CsvRow>{{"a", "", ""}, {"", "b"}}));
    EXPECT_EQ(csvRows("x,\"\"").front(), (CsvRow{"x", ""}));
    EXPECT_TRUE(csvRows("").empty());
}

TEST(CsvRows, QuoteErrors) {
    EXPECT_EQ(rowsError("a,\"open\nrest"), "CSV has an unclosed quoted field.");
    EXPECT_EQ(rowsError("a,\"ends \"\""), "CSV has an unclosed quoted field.");
    EXPECT_EQ(rowsError("a,b\"c\n"), "Malformed CSV quotes.");
    EXPECT_EQ(rowsError("a, \"b\"\n"), "Malformed CSV quotes.");
    EXPECT_EQ(rowsError("a,\"b\"c\n"), "Unexpected text after closing CSV quote.");
    EXPECT_EQ(rowsError("a,\"b\" \n"), "Unexpected text after closing CSV quote.");
    EXPECT_EQ(rowsError("a,\"b\"\"\"\"\n"), "CSV has an unclosed quoted field.");
}

TEST(CsvHeader, TrimsAndLowerCases) {
    EXPECT_EQ(csvHeader("Date, Sender ,\tTEXT\n1,2,3\n"), (CsvRow{"date", "sender", "text"}));
    EXPECT_EQ(csvHeader("\uFEFF\n\nDate,Sender,Text"), (CsvRow{"date", "sender", "text"}));
    EXPECT_FALSE(csvHeader(""));
    EXPECT_FALSE(csvHeader("\"date,sender"));
    // A broken later row is the importer's business, not the header's.
    EXPECT_TRUE(csvHeader("date,sender,text\n\"unclosed"));
}

TEST(CsvHeader, ChatColumns) {
    EXPECT_TRUE(hasChatColumns({"date", "sender", "text"}));
    EXPECT_TRUE(hasChatColumns({"date_local", "direction", "sender", "text"}));
    EXPECT_FALSE(hasChatColumns({"date_local", "sender", "text"}));
    EXPECT_FALSE(hasChatColumns({"date", "sender"}));
}

TEST(Csv, GenericSpreadsheet) {
    auto result =
        csv("Date, Sender ,TEXT\n"
            "14/06/2025 09:15,Sam Lee,\"Morning, love\"\n"
            "2025-06-14 09:20:05,Alex Morgan,See you\n",
            "abc", DateOrder::dayFirst);
    ASSERT_EQ(result.items.size(), 2u);
    const Evidence& first = result.items[0];
    EXPECT_EQ(first.kind, ItemKind::message);
    EXPECT_EQ(written(first.date), "2025-06-14 09:15:00");
    EXPECT_EQ(first.sender, "Sam Lee");
    EXPECT_EQ(first.text, "Morning, love");
    EXPECT_EQ(first.position, 2);
    EXPECT_EQ(first.fileID, "abc");
    EXPECT_FALSE(first.details().attachmentName);
    EXPECT_EQ(written(result.items[1].date), "2025-06-14 09:20:05");
    EXPECT_EQ(result.items[1].position, 3);
    EXPECT_TRUE(result.notes.empty());
}

TEST(Csv, DateOrderDecidesAmbiguousDates) {
    std::string text = "date,sender,text\n05/01/2025 09:00,Sam,Hi\n";
    EXPECT_EQ(written(csv(text, "f", DateOrder::dayFirst).items[0].date), "2025-01-05 09:00:00");
    EXPECT_EQ(written(csv(text, "f", DateOrder::monthFirst).items[0].date), "2025-05-01 09:00:00");
    EXPECT_EQ(written(csv(text, "f", DateOrder::automatic).items[0].date), "2025-01-05 09:00:00");
}

TEST(Csv, QuilloryDateReadFromItsFirst19Characters) {
    auto result = csv(kQuilloryHeader + "2025-06-14 09:15:00 +0200,incoming,Sam,Hi,\n", "f",
                      DateOrder::dayFirst);
    ASSERT_EQ(result.items.size(), 1u);
    EXPECT_EQ(written(result.items[0].date), "2025-06-14 09:15:00");
    EXPECT_EQ(csvError("date,sender,text\n2025-06-14 09:15:00 +0200,Sam,Hi\n"),
              "Could not read the date on row 2.");
}

TEST(Csv, RowNumbersCountTheHeaderAsRowOne) {
    EXPECT_EQ(csvError("date,sender,text\n2025-06-14 09:15,Sam,Hi\nsoon,Sam,Hi\n"),
              "Could not read the date on row 3.");
    EXPECT_EQ(csvError("date,sender,text\n2025-06-14 09:15,Sam,Hi\n2025-06-14 09:16,Sam\n"),
              "Row 3 has the wrong number of columns.");
    EXPECT_EQ(csvError("date,sender,text\n2025-06-14 09:15,Sam,Hi,extra\n"),
              "Row 2 has the wrong number of columns.");
}

TEST(Csv, EventRowsAreSkippedButTheirDatesMustRead) {
    auto result = csv(kQuilloryHeader +
                          "2025-06-14 09:15:00,event,,Sam named the conversation,\n"
                          "2025-06-14 09:16:00,outgoing,Alex,Hello,\n",
                      "f", DateOrder::dayFirst);
    ASSERT_EQ(result.items.size(), 1u);
    EXPECT_EQ(result.items[0].text, "Hello");
    EXPECT_EQ(result.items[0].position, 3);

    EXPECT_EQ(csvError(kQuilloryHeader + "yesterday,event,,Renamed,\n" +
                       "2025-06-14 09:16:00,outgoing,Alex,Hello,\n"),
              "Could not read the date on row 2.");
    EXPECT_EQ(csvError(kQuilloryHeader + "2025-06-14 09:15:00,event,,Renamed,\n"),
              "CSV has no messages.");
}

TEST(Csv, DirectionWithoutDateLocalIsAGenericSpreadsheet) {
    auto result = csv("date,direction,sender,text\n2025-06-14 09:15,event,Sam,Hi\n", "f",
                      DateOrder::dayFirst);
    EXPECT_EQ(result.items.size(), 1u);
}

TEST(Csv, OnlyTheFirstAttachmentIsLinked) {
    auto result = csv(kQuilloryHeader +
                          "2025-06-14 09:15:00,incoming,Sam,Photos,IMG_1.jpg; IMG_2.jpg\n"
                          "2025-06-14 09:16:00,incoming,Sam,One,IMG_3.jpg\n"
                          "2025-06-14 09:17:00,incoming,Sam,None,\n",
                      "f", DateOrder::dayFirst);
    ASSERT_EQ(result.items.size(), 3u);
    EXPECT_EQ(result.items[0].details().attachmentName, "IMG_1.jpg");
    EXPECT_EQ(result.items[1].details().attachmentName, "IMG_3.jpg");
    EXPECT_FALSE(result.items[2].details().attachmentName);
}

TEST(Csv, RefusalsOfTheWholeFile) {
    EXPECT_EQ(csvError(""), "CSV is empty.");
    EXPECT_EQ(csvError("\n\n"), "CSV is empty.");
    EXPECT_EQ(csvError("date,sender\n2025-06-14,Sam\n"),
              "CSV needs date, sender and text columns.");
    EXPECT_EQ(csvError("date,sender,text\n"), "CSV has no messages.");
    EXPECT_EQ(csvError("date,sender,text\n2025-06-14,Sam,\"oops\n"),
              "CSV has an unclosed quoted field.");
}

struct Spreadsheet {
    const char* name;
    std::string text;
    std::string sender, message;
};

// Each header names its columns as one exporter or language does.
const Spreadsheet kSpreadsheets[] = {
    {"KakaoTalkForMac", "Date,User,Message\n2023-03-04 18:12:00,Sam Lee,Hi\n", "Sam Lee", "Hi"},
    {"OtherExporters", "Timestamp,Sender Name,Body\n2023-03-04 18:12:00,Sam,Hi\n", "Sam", "Hi"},
    {"Korean", "날짜,보낸 사람,메시지\n2023-03-04 18:12:00,이수진,안녕\n", "이수진", "안녕"},
    {"Japanese", "日時,送信者,本文\n2023-03-04 18:12:00,Sam,やあ\n", "Sam", "やあ"},
    {"German", "Datum,Absender,Nachricht\n2023-03-04 18:12:00,Sam,Hallo\n", "Sam", "Hallo"},
    {"FrenchInCapitals", "HORODATAGE,EXPÉDITEUR,TEXTE\n2023-03-04 18:12:00,Sam,Salut\n", "Sam",
     "Salut"},
    {"Spanish", "Fecha,Remitente,Mensaje\n2023-03-04 18:12:00,Sam,Hola\n", "Sam", "Hola"},
    {"DateBeforeTime", "Time,Date,From,Text\n18:12,2023-03-04 18:12:00,Sam,Hi\n", "Sam", "Hi"},
    {"DateAndTimeApart", "Date,Time,Sender,Message\n04/03/2023,18:12:00,Sam,Hi\n", "Sam", "Hi"},
    {"Windows1252",
     decodeWindows1252(
         "Datum,Absender,Nachricht\n2023-03-04 18:12:00,M\xFCller,5 \x80 \x93ok\x94\n"),
     "Müller", "5 € “ok”"},
};

TEST(Csv, ColumnNamesOfOtherExportersAndLanguages) {
    for (const auto& s : kSpreadsheets) {
        EXPECT_TRUE(hasChatColumns(*csvHeader(s.text))) << s.name;
        auto items = csv(s.text, "f", DateOrder::dayFirst).items;
        ASSERT_EQ(items.size(), 1u) << s.name;
        EXPECT_EQ(written(items[0].date), "2023-03-04 18:12:00") << s.name;
        EXPECT_EQ(items[0].sender, s.sender) << s.name;
        EXPECT_EQ(items[0].text, s.message) << s.name;
    }
}

TEST(Csv, ByteOrderMarkBeforeTheHeader) {
    EXPECT_EQ(
        csv("\uFEFFdate,sender,text\n2025-06-14,Sam,Hi\n", "f", DateOrder::dayFirst).items.size(),
        1u);
}

}  // namespace
}  // namespace kinfolio::Importer
