#include "support/documents.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::makePDF;
using testing::PDFSpec;

// Loose PDFs become the documents source, each dated and sorted into its
// category by its first page alone (the last page of the long statement
// would date and sort it otherwise); what cannot be opened is skipped.
TEST(DocumentSource, DatesAndSortsEveryDocument) {
    std::vector<std::string> pages(10000);
    pages.front() = "Annual statement, issued 2 January 2025";
    pages.back() = "Last page, 31 December 2030";
    testing::TempFolder dir;
    ScanResult r = testing::scanFiles(
        dir,
        {{"Booking.pdf", makePDF(PDFSpec({"Booking confirmation\nIssued: 3 March 2025\nDeparture "
                                          "12 April 2025",
                                          "Terms and conditions"},
                                         "2025-01-10T08:00:00"))},
         {"Ferry.pdf", makePDF(PDFSpec({"Boarding Friday 14:30"}, "2025-02-01T09:30:00"))},
         {"Ticket IMG_20250105_120000.pdf", makePDF(PDFSpec({"Friday 14:30"}))},
         {"Lease_2024.pdf", makePDF(PDFSpec({""}, "2024-05-06T07:08:09"))},
         {"statement.pdf", makePDF(PDFSpec(pages, "2024-01-01T00:00:00"))},
         {"Locked.pdf", makePDF(PDFSpec({"Statement"}).locked("secret"))},
         {"empty.pdf", ""},
         {"notes.PDF", "Meeting notes, not a PDF\n"}});
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "Booking.pdf | Documents | 5 documents · May 2024 – Mar 2025",
                  "Locked.pdf | PDF could not be opened (it may be password protected).",
                  "empty.pdf | The file is empty. Copy it again from where it came from.",
                  "notes.PDF | PDF could not be opened (it may be password protected)."}));
    const std::tuple<const char*, const char*, bool, const char*> expected[] = {
        {"Booking", "2025-03-03 00:00", false, "Travel"},
        // No full date on the page: the file's creation date.
        {"Ferry", "2025-02-01 09:30", false, "Travel"},
        // Nor a creation date: the date in the name, marked as an estimate.
        {"Ticket IMG_20250105_120000", "2025-01-05 12:00", true, "Document"},
        {"Lease_2024", "2024-05-06 07:08", false, "Home"},
        {"statement", "2025-01-02 00:00", false, "Finance"},
    };
    const Source& documents = r.sources.at(0);
    for (const auto& [title, date, estimated, category] : expected) {
        SCOPED_TRACE(title);
        auto item = std::ranges::find(documents.items, std::string(title), &Evidence::text);
        ASSERT_NE(item, documents.items.end());
        EXPECT_EQ(item->kind, ItemKind::document);
        EXPECT_EQ(Calendar::format(item->date, "yyyy-MM-dd HH:mm"), date);
        EXPECT_EQ(item->dateIsEstimated, estimated);
        EXPECT_EQ(item->sender, category);
        EXPECT_EQ(item->details().imageURL, dir.path() + "/" + title + ".pdf");
        EXPECT_EQ(item->position, 1);
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
