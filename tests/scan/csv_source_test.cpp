#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

TEST(CsvSource, RefusedSpreadsheetsAreSkippedWithTheirReason) {
    ScanResult r =
        testing::scanFiles({{"chat.csv", "date,sender,text\n2025-06-14 09:15:00 +0200,Sam,Hi\n"},
                            {"budget.csv", "item,amount\nrent,900\n"}},
                           DateOrder::dayFirst);
    EXPECT_EQ(
        testing::shown(r),
        (std::vector<std::string>{"budget.csv | Spreadsheet without date, sender and text columns.",
                                  "chat.csv | Could not read the date on row 2."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
