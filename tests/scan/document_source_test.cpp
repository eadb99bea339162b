#include <gtest/gtest.h>

#include <algorithm>

#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/documents.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::makePDF;
using testing::PDFSpec;
using testing::TempFolder;

const Evidence* titled(const Source& source, const std::string& title) {
    auto it = std::find_if(source.items.begin(), source.items.end(),
                           [&](const Evidence& e) { return e.text == title; });
    return it == source.items.end() ? nullptr : &*it;
}

// Loose PDFs become the documents source, each dated and sorted into its
// category; what cannot be opened is skipped with its reason, and the folder
// is left as it was.
TEST(DocumentSource, DatesAndSortsEveryDocument) {
    TempFolder dir;
    dir.write(
        "Booking.pdf",
        makePDF(PDFSpec({"Booking confirmation\nIssued: 3 March 2025\nDeparture 12 April 2025",
                         "Terms and conditions"},
                        "2025-01-10T08:00:00")));
    dir.write("Ferry.pdf", makePDF(PDFSpec({"Boarding Friday 14:30"}, "2025-02-01T09:30:00")));
    dir.write("Ticket IMG_20250105_120000.pdf", makePDF(PDFSpec({"Friday 14:30"})));
    dir.write("Lease_2024.pdf", makePDF(PDFSpec({""}, "2024-05-06T07:08:09")));
    dir.write("Locked.pdf", makePDF(PDFSpec({"Statement"}).locked("secret")));
    dir.write("empty.pdf", "");
    dir.write("notes.PDF", "Meeting notes, not a PDF\n");
    std::string before = testing::folderFingerprint(dir.path());

    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");

    const Source* documents = testing::sourceNamed(r, "Documents");
    ASSERT_TRUE(documents);
    EXPECT_EQ(documents->detail, "4 documents \u00B7 May 2024 \u2013 Mar 2025");
    struct Expected {
        const char* title;
        const char* date;
        bool estimated;
        const char* category;
    } expected[] = {
        {"Booking", "2025-03-03 00:00", false, "Travel"},
        // No full date on the page: the file's creation date.
        {"Ferry", "2025-02-01 09:30", false, "Travel"},
        // Nor a creation date: the date in the name, marked as an estimate.
        {"Ticket IMG_20250105_120000", "2025-01-05 12:00", true, "Document"},
        {"Lease_2024", "2024-05-06 07:08", false, "Home"},
    };
    for (const auto& e : expected) {
        SCOPED_TRACE(e.title);
        const Evidence* item = titled(*documents, e.title);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->kind, ItemKind::document);
        EXPECT_EQ(Calendar::format(item->date, "yyyy-MM-dd HH:mm"), e.date);
        EXPECT_EQ(item->dateIsEstimated, e.estimated);
        EXPECT_EQ(item->sender, e.category);
        EXPECT_EQ(item->details().imageURL, dir.path() + "/" + e.title + ".pdf");
        EXPECT_EQ(item->position, 1);
    }

    std::vector<SkippedFile> skipped = {
        {"Locked.pdf", "PDF could not be opened (it may be password protected)."},
        {"empty.pdf", "The file is empty. Copy it again from where it came from."},
        {"notes.PDF", "PDF could not be opened (it may be password protected)."}};
    EXPECT_EQ(r.skipped, skipped);
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
}

// A document of thousands of pages is read by its first page alone.
TEST(DocumentSource, ReadsOnlyTheFirstPageOfALongDocument) {
    TempFolder dir;
    std::vector<std::string> pages(10000);
    pages.front() = "Annual statement, issued 2 January 2025";
    pages.back() = "Last page, 31 December 2030";
    dir.write("statement.pdf", makePDF(PDFSpec(pages, "2024-01-01T00:00:00")));

    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");

    const Source* documents = testing::sourceNamed(r, "Documents");
    ASSERT_TRUE(documents);
    ASSERT_EQ(documents->items.size(), 1u);
    EXPECT_EQ(Calendar::format(documents->items[0].date, "yyyy-MM-dd"), "2025-01-02");
    EXPECT_EQ(documents->items[0].sender, "Finance");
}

}  // namespace
}  // namespace kinfolio::Scanner
