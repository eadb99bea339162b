#include "media/documents.h"

#include <gtest/gtest.h>

#include <functional>

#include "model/calendar.h"
#include "support/documents.h"

namespace kinfolio::Scanner {
namespace {

using testing::makePDF;
using testing::PDFSpec;

std::string day(std::optional<Instant> t) {
    return t ? Calendar::format(*t, "yyyy-MM-dd HH:mm") : "none";
}

TEST(DocumentCategory, KeywordsInTableOrderThenTheName) {
    struct Case {
        const char* text;
        const char* name;
        const char* category;
    } cases[] = {
        {"Your flight LH 2471 departs at 07:25", "ticket.pdf", "Travel"},
        // The first category whose keyword is found wins.
        {"Flight paid by bank transfer", "x.pdf", "Travel"},
        {"Hotel reservation, paid from account number 1234", "x.pdf", "Travel"},
        {"Monthly statement. Standing order: rent 1,150.00", "x.pdf", "Finance"},
        {"BOARDING PASS  GATE 12", "scan.pdf", "Travel"},
        {"Electricity bill for the quarter", "x.pdf", "Home"},
        {"Certificate of Marriage", "x.pdf", "Certificate"},
        {"Happy birthday, love!", "card.pdf", "Certificate"},  // plain substrings
        {"Minutes of the meeting", "minutes.pdf", "Document"},
        // A scan without text is sorted by its name alone.
        {"", "Lease_2024.pdf", "Home"},
        {"", "Scan 0001.pdf", "Document"},
        {"", "Flight-Bookings.PDF", "Travel"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(category(c.text, c.name), c.category) << c.text << " / " << c.name;
}

TEST(DocumentCategory, OnlyTheStartOfALongTextCounts) {
    std::string filler(3000, 'x');
    EXPECT_EQ(category(filler + " flight", "a.pdf"), "Document");
    EXPECT_EQ(category(filler.substr(10) + " flight", "a.pdf"), "Travel");
    // Characters, not bytes: 2,990 two-byte letters leave room for the word.
    std::string accented;
    for (int i = 0; i < 2990; ++i)
        accented += "\u00E9";
    EXPECT_EQ(category(accented + " flight", "a.pdf"), "Travel");
}

TEST(DocumentFirstDate, TheFirstDateWithAFullYear) {
    struct Case {
        const char* text;
        DateOrder order;
        const char* expected;
    } cases[] = {
        {"Issued: 3 March 2025\nDeparture 12 April 2025", DateOrder::automatic, "2025-03-03 00:00"},
        {"Boarding Friday 14:30, gate closes 20 minutes before", DateOrder::automatic, "none"},
        // A two-digit year is passed over for the next date that has four.
        {"Printed 01/02/25. Statement date 28 February 2025", DateOrder::automatic,
         "2025-02-28 00:00"},
        {"Valid from 03/04/2025", DateOrder::dayFirst, "2025-04-03 00:00"},
        {"Valid from 03/04/2025", DateOrder::monthFirst, "2025-03-04 00:00"},
        {"Check-in 2025-06-14 15:00", DateOrder::automatic, "2025-06-14 15:00"},
        {"", DateOrder::automatic, "none"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(day(firstDate(c.text, c.order)), c.expected) << c.text;
}

TEST(DocumentFirstDate, LooksOnlyAtTheStartOfTheText) {
    std::string text(4000, ' ');
    EXPECT_EQ(day(firstDate(text + "12 April 2025", DateOrder::automatic)), "none");
    EXPECT_EQ(day(firstDate(text.substr(20) + "12 April 2025", DateOrder::automatic)),
              "2025-04-12 00:00");
}

// What the scan learns from the bytes of a PDF, and what it refuses.
TEST(DocumentInfo, FirstPageTextAndCreationDate) {
    struct Case {
        const char* name;
        std::function<std::string()> bytes;
        bool opens;
        const char* text = "";  // found in the first page's text
        const char* created = "none";
    } cases[] = {
        {"booking",
         [] {
             return makePDF(
                 PDFSpec({"Issued: 3 March 2025", "Page two: 9 May 2025"}, "2025-02-01T09:30:00"));
         },
         true, "Issued: 3 March 2025", "2025-02-01 09:30"},
        {"no creation date", [] { return makePDF(PDFSpec({"Friday 14:30"})); }, true,
         "Friday 14:30"},
        {"empty page", [] { return makePDF(PDFSpec({""}, "2024-05-06T07:08:09")); }, true, "",
         "2024-05-06 07:08"},
        {"turned page", [] { return makePDF(PDFSpec({"Landscape"}).turned(90)); }, true,
         "Landscape"},
        {"password", [] { return makePDF(PDFSpec({"Secret"}).locked("pw")); }, false},
        {"zero bytes", [] { return std::string(); }, false},
        {"text named .pdf", [] { return std::string("Meeting notes\nnot a PDF\n"); }, false},
        {"truncated",
         [] {
             std::string pdf = makePDF(PDFSpec({"Cut short"}));
             return pdf.substr(0, 200);
         },
         false},
        // The cross-reference table points nowhere; poppler rebuilds it from
        // the objects, so the document still opens.
        {"broken cross-reference table",
         [] {
             std::string pdf = makePDF(PDFSpec({"Repaired"}));
             size_t at = pdf.rfind("startxref");
             return pdf.substr(0, at) + "startxref\n99999999\n%%EOF\n";
         },
         true, "Repaired"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string bytes = c.bytes();
        auto info = documentInfo(bytes);
        ASSERT_EQ(info.has_value(), c.opens);
        if (!info) continue;
        EXPECT_NE(info->firstPageText.find(c.text), std::string::npos) << info->firstPageText;
        EXPECT_EQ(info->firstPageText.find("Page two"), std::string::npos);
        EXPECT_EQ(day(info->created), c.created);
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
