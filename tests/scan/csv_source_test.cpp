#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::scanFiles;
using testing::shown;

TEST(CsvSource, ChatSpreadsheetIsNamedAfterItsFileAndReadInItsDateOrder) {
    const std::string h = "date,sender,text\n";
    const std::string note =
        "The dates could be day/month or month/day; day first was assumed. Change Date order "
        "if they look wrong.";
    struct Case {
        const char* name;
        std::string csv;
        DateOrder order;
        std::string detail, first, note = "";
    } cases[] = {
        {"only day first", h + "14/06/2025 09:15,Sam Lee,Hi\n14/07/2025 09:16,Alex Morgan,Hello\n",
         DateOrder::automatic, "2 messages · Jun 2025 – Jul 2025", "2025-06-14 09:15 Sam Lee: Hi"},
        {"only month first", h + "06/14/2025 09:15,Sam,Hi\n05/01/2025 09:00,Sam,Hi\n",
         DateOrder::automatic, "2 messages · May 2025 – Jun 2025", "2025-05-01 09:00 Sam: Hi"},
        {"either: day first assumed", h + "05/01/2025 09:00,Sam,Hi\n", DateOrder::automatic,
         "1 message · Jan 2025", "2025-01-05 09:00 Sam: Hi", note},
        {"either: month first chosen", h + "05/01/2025 09:00,Sam,Hi\n", DateOrder::monthFirst,
         "1 message · May 2025", "2025-05-01 09:00 Sam: Hi"},
        // Dates that read the same either way need no note.
        {"ISO throughout", h + "2025-01-06 09:00,Sam,Hi\n2025-02-03 10:00,Alex,Yes\n",
         DateOrder::automatic, "2 messages · Jan 2025 – Feb 2025", "2025-01-06 09:00 Sam: Hi"},
        // One cell that could be misread brings the note back.
        {"ISO and one either way", h + "2025-01-06 09:00,Sam,Hi\n05/01/2025 09:00,Sam,Hi\n",
         DateOrder::automatic, "2 messages · Jan 2025", "2025-01-05 09:00 Sam: Hi", note},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScanResult r = scanFiles({{"Holiday chat.csv", c.csv}}, c.order);
        ASSERT_EQ(r.sources.size(), 1u);
        const Source& s = r.sources[0];
        EXPECT_EQ(s.kind, SourceKind::chatCSV);
        EXPECT_EQ(shown(r),
                  std::vector<std::string>{"Holiday chat.csv | Holiday chat | " + c.detail});
        EXPECT_EQ(testing::itemLines(s).at(0), c.first);
        EXPECT_EQ(s.notes, c.note.empty() ? std::vector<std::string>{} : std::vector{c.note});
    }
}

TEST(CsvSource, RefusedSpreadsheetsAreSkippedWithTheirReason) {
    ScanResult r = scanFiles({{"chat.csv", "date,sender,text\n2025-06-14 09:15:00 +0200,Sam,Hi\n"},
                              {"budget.csv", "item,amount\nrent,900\n"}},
                             DateOrder::dayFirst);
    EXPECT_EQ(shown(r), (std::vector<std::string>{
                            "budget.csv | Spreadsheet without date, sender and text columns.",
                            "chat.csv | Could not read the date on row 2."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
