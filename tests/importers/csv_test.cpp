#include "importers/csv.h"

#include <gtest/gtest.h>

#include "model/text.h"
#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using enum DateOrder;
using testing::itemLines;

// The rows as "[field|field]…", or the refusal.
std::string rowsOf(const std::string& text) {
    std::string rows;
    std::string error = testing::errorOf([&] {
        for (const CsvRow& row : csvRows(text))
            rows += "[" + join(row, "|") + "]";
    });
    return error == "(no error)" ? rows : error;
}

TEST(CsvRows, FieldsRowsAndQuoteErrors) {
    const std::pair<const char*, const char*> cases[] = {
        {"a,\"x, \"\"y\"\"\r\nz\",b\n", "[a|x, \"y\"\r\nz|b]"},
        {"a,b\r\nc,d\re,f\ng,h", "[a|b][c|d][e|f][g|h]"},
        // Empty fields are kept, blank rows dropped.
        {"a,,\n\n,,\n\"\",\"\"\n,b\n", "[a||][|b]"},
        {"x,\"\"", "[x|]"},
        {"", ""},
        {"a,\"open\nrest", "CSV has an unclosed quoted field."},
        {"a,\"ends \"\"", "CSV has an unclosed quoted field."},
        {"a,\"b\"\"\"\"\n", "CSV has an unclosed quoted field."},
        {"a,b\"c\n", "Malformed CSV quotes."},
        {"a, \"b\"\n", "Malformed CSV quotes."},
        {"a,\"b\"c\n", "Unexpected text after closing CSV quote."},
        {"a,\"b\" \n", "Unexpected text after closing CSV quote."},
    };
    for (const auto& [text, rows] : cases)
        EXPECT_EQ(rowsOf(text), rows) << text;
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

const std::string kQuilloryHeader = "date_local,direction,sender,text,attachments\n";

// One day/month-ambiguous row, read in each order.
const std::string kAmbiguous = "date,sender,text\n05/01/2025 09:00,Sam,Hi\n";

TEST(Csv, GenericAndQuillorySpreadsheetsReadToMessages) {
    const std::tuple<const char*, std::string, DateOrder, std::vector<std::string>> cases[] = {
        {"generic, rows numbered from the header as row 1",
         "\uFEFFDate, Sender ,TEXT\n14/06/2025 09:15,Sam Lee,\"Morning, love\"\n"
         "2025-06-14 09:20:05,Alex Morgan,See you\n",
         dayFirst,
         {"2 2025-06-14 09:15:00 Sam Lee: Morning, love",
          "3 2025-06-14 09:20:05 Alex Morgan: See you"}},
        {"day first", kAmbiguous, dayFirst, {"2 2025-01-05 09:00:00 Sam: Hi"}},
        {"month first", kAmbiguous, monthFirst, {"2 2025-05-01 09:00:00 Sam: Hi"}},
        {"automatic reads day first", kAmbiguous, automatic, {"2 2025-01-05 09:00:00 Sam: Hi"}},
        {"direction without date_local is a generic spreadsheet",
         "date,direction,sender,text\n2025-06-14 09:15,event,Sam,Hi\n",
         dayFirst,
         {"2 2025-06-14 09:15:00 Sam: Hi"}},
        // Quillory writes its zone after the time: only the first 19 characters are read.
        {"Quillory: events skipped, only the first attachment linked",
         kQuilloryHeader + "2025-06-14 09:15:00 +0200,event,,Sam named the conversation,\n"
                           "2025-06-14 09:16:00 +0200,incoming,Sam,Photos,IMG_1.jpg; IMG_2.jpg\n"
                           "2025-06-14 09:17:00,outgoing,Alex,One,IMG_3.jpg\n"
                           "2025-06-14 09:18:00,incoming,Sam,None,\n",
         dayFirst,
         {"3 2025-06-14 09:16:00 Sam: Photos [IMG_1.jpg]",
          "4 2025-06-14 09:17:00 Alex: One [IMG_3.jpg]", "5 2025-06-14 09:18:00 Sam: None"}},
    };
    for (const auto& [name, text, order, items] : cases) {
        auto result = csv(text, "abc", order);
        EXPECT_EQ(itemLines(result.items), items) << name;
        EXPECT_TRUE(result.notes.empty()) << name;
        EXPECT_EQ(result.items.at(0).fileID, "abc");
    }
}

TEST(Csv, RefusalsNameTheRow) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "CSV is empty."},
        {"\n\n", "CSV is empty."},
        {"date,sender\n2025-06-14,Sam\n", "CSV needs date, sender and text columns."},
        {"date,sender,text\n", "CSV has no messages."},
        {kQuilloryHeader + "2025-06-14 09:15:00,event,,Renamed,\n", "CSV has no messages."},
        {"date,sender,text\n2025-06-14,Sam,\"oops\n", "CSV has an unclosed quoted field."},
        {"date,sender,text\n2025-06-14 09:15:00 +0200,Sam,Hi\n",
         "Could not read the date on row 2."},
        {"date,sender,text\n2025-06-14 09:15,Sam,Hi\nsoon,Sam,Hi\n",
         "Could not read the date on row 3."},
        // An event row is skipped, but its date must still read.
        {kQuilloryHeader + "yesterday,event,,Renamed,\n2025-06-14 09:16:00,outgoing,Alex,Hello,\n",
         "Could not read the date on row 2."},
        {"date,sender,text\n2025-06-14 09:15,Sam,Hi\n2025-06-14 09:16,Sam\n",
         "Row 3 has the wrong number of columns."},
        {"date,sender,text\n2025-06-14 09:15,Sam,Hi,extra\n",
         "Row 2 has the wrong number of columns."},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(testing::errorOf([&] { csv(text, "f", dayFirst); }), message) << text;
}

// Each header names its columns as one exporter or language does; then the
// item's sender and text.
const std::tuple<const char*, std::string, std::string> kSpreadsheets[] = {
    {"KakaoTalkForMac", "Date,User,Message\n2023-03-04 18:12:00,Sam Lee,Hi\n", "Sam Lee: Hi"},
    {"OtherExporters", "Timestamp,Sender Name,Body\n2023-03-04 18:12:00,Sam,Hi\n", "Sam: Hi"},
    {"Korean", "날짜,보낸 사람,메시지\n2023-03-04 18:12:00,이수진,안녕\n", "이수진: 안녕"},
    {"Japanese", "日時,送信者,本文\n2023-03-04 18:12:00,Sam,やあ\n", "Sam: やあ"},
    {"German", "Datum,Absender,Nachricht\n2023-03-04 18:12:00,Sam,Hallo\n", "Sam: Hallo"},
    {"FrenchInCapitals", "HORODATAGE,EXPÉDITEUR,TEXTE\n2023-03-04 18:12:00,Sam,Salut\n",
     "Sam: Salut"},
    {"Spanish", "Fecha,Remitente,Mensaje\n2023-03-04 18:12:00,Sam,Hola\n", "Sam: Hola"},
    {"DateBeforeTime", "Time,Date,From,Text\n18:12,2023-03-04 18:12:00,Sam,Hi\n", "Sam: Hi"},
    {"DateAndTimeApart", "Date,Time,Sender,Message\n04/03/2023,18:12:00,Sam,Hi\n", "Sam: Hi"},
    {"Windows1252",
     decodeWindows1252(
         "Datum,Absender,Nachricht\n2023-03-04 18:12:00,M\xFCller,5 \x80 \x93ok\x94\n"),
     "Müller: 5 € “ok”"},
};

TEST(Csv, ColumnNamesOfOtherExportersAndLanguages) {
    for (const auto& [name, text, item] : kSpreadsheets) {
        EXPECT_TRUE(hasChatColumns(*csvHeader(text))) << name;
        EXPECT_EQ(itemLines(csv(text, "f", dayFirst).items),
                  std::vector<std::string>{"2 2023-03-04 18:12:00 " + item})
            << name;
    }
}

}  // namespace
}  // namespace kinfolio::Importer
