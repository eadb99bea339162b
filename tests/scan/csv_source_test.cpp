#include <gtest/gtest.h>

#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

const std::string kDayFirstNote =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

ScanResult scanOne(const std::string& name, const std::string& text, DateOrder order) {
    TempFolder dir;
    dir.write(name, text);
    std::string before = testing::folderFingerprint(dir.path());
    ScanResult result = scan(dir.path(), order, "UTC");
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
    return result;
}

std::string firstDate(const ScanResult& result) {
    return Calendar::format(result.sources.at(0).items.at(0).date, "yyyy-MM-dd HH:mm");
}

TEST(CsvSource, ChatSpreadsheetIsNamedAfterItsFile) {
    ScanResult result = scanOne("Holiday chat.csv",
                                "date,sender,text\n"
                                "14/06/2025 09:15,Sam Lee,Hi\n"
                                "14/07/2025 09:16,Alex Morgan,Hello\n",
                                DateOrder::automatic);
    EXPECT_TRUE(result.skipped.empty());
    ASSERT_EQ(result.sources.size(), 1u);
    const Source& s = result.sources[0];
    EXPECT_EQ(s.kind, SourceKind::chatCSV);
    EXPECT_EQ(s.name, "Holiday chat");
    EXPECT_EQ(s.detail, "2 messages \u00B7 Jun 2025 \u2013 Jul 2025");
    EXPECT_EQ(s.files.at(0).path, "Holiday chat.csv");
    EXPECT_TRUE(s.notes.empty());  // 14/06 can only be day first
}

TEST(CsvSource, AutomaticOrderFollowsTheDatesOrAssumesDayFirst) {
    std::string monthFirst = "date,sender,text\n06/14/2025 09:15,Sam,Hi\n05/01/2025 09:00,Sam,Hi\n";
    ScanResult detected = scanOne("a.csv", monthFirst, DateOrder::automatic);
    EXPECT_TRUE(detected.sources.at(0).notes.empty());
    EXPECT_EQ(firstDate(detected), "2025-05-01 09:00");

    ScanResult assumed =
        scanOne("b.csv", "date,sender,text\n05/01/2025 09:00,Sam,Hi\n", DateOrder::automatic);
    EXPECT_EQ(assumed.sources.at(0).notes, std::vector<std::string>{kDayFirstNote});
    EXPECT_EQ(firstDate(assumed), "2025-01-05 09:00");

    ScanResult chosen =
        scanOne("c.csv", "date,sender,text\n05/01/2025 09:00,Sam,Hi\n", DateOrder::monthFirst);
    EXPECT_TRUE(chosen.sources.at(0).notes.empty());
    EXPECT_EQ(firstDate(chosen), "2025-05-01 09:00");
    // Dates that read the same either way need no note: ISO throughout.
    ScanResult iso =
        scanOne("d.csv", "date,sender,text\n2025-01-06 09:00,Sam,Hi\n2025-02-03 10:00,Alex,Yes\n",
                DateOrder::automatic);
    EXPECT_TRUE(iso.sources.at(0).notes.empty());
    EXPECT_EQ(firstDate(iso), "2025-01-06 09:00");
    // One cell that could be misread brings the note back.
    ScanResult mixed =
        scanOne("e.csv", "date,sender,text\n2025-01-06 09:00,Sam,Hi\n05/01/2025 09:00,Sam,Hi\n",
                DateOrder::automatic);
    EXPECT_EQ(mixed.sources.at(0).notes, std::vector<std::string>{kDayFirstNote});
}

TEST(CsvSource, RefusedSpreadsheetIsSkippedWithTheImportersReason) {
    ScanResult result = scanOne("chat.csv", "date,sender,text\n2025-06-14 09:15:00 +0200,Sam,Hi\n",
                                DateOrder::dayFirst);
    EXPECT_TRUE(result.sources.empty());
    ASSERT_EQ(result.skipped.size(), 1u);
    EXPECT_EQ(result.skipped[0], (SkippedFile{"chat.csv", "Could not read the date on row 2."}));
}

TEST(CsvSource, SpreadsheetWithoutChatColumnsIsNotAChat) {
    ScanResult result = scanOne("budget.csv", "item,amount\nrent,900\n", DateOrder::dayFirst);
    ASSERT_EQ(result.skipped.size(), 1u);
    EXPECT_EQ(result.skipped[0].reason, "Spreadsheet without date, sender and text columns.");
}

}  // namespace
}  // namespace kinfolio::Scanner
