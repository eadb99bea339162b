#include <gtest/gtest.h>

#include <cmath>

#include "support/documents.h"
#include "support/layout_export.h"

// PDF documents on the page, checked as a user meets them: the folder is
// exported and the written PDF read back as text and pixels.
namespace kinfolio {
namespace {

using testing::makePDF;
using testing::PDFSpec;

constexpr uint32_t kPaper = 0xF0C8A0;

using Documents = testing::LayoutExport;

// The first page is drawn as vectors: its words are text in the export, and
// its drawn size follows the page's shape, a turned page shown as turned.
// Drawn as it is, a page would print a hidden word that no rule can rewrite:
// such a page is left out and says so, and the word is nowhere in the file.
TEST_F(Documents, TheFirstPageIsDrawnAsTextAtItsShapeUnlessItHoldsHiddenText) {
    // File, document, words on its first page, drawn width and height in points.
    const std::tuple<const char*, PDFSpec, const char*, double, double> cases[] = {
        // A4 portrait: the height limit of 360 points decides.
        {"Booking.pdf",
         PDFSpec({"Booking reference Issued: 3 March 2025", "Second page words"},
                 "2025-01-01T00:00:00")
             .onPaper(kPaper),
         "Booking reference Issued: 3 March 2025", std::floor(595 * 360 / 842.0), 360},
        // Portrait pages turned by 90 degrees show landscape: the width limit
        // (62 % of the 495-point column) decides.
        {"Turned.pdf",
         PDFSpec({"Turned page words 4 April 2025"}, "2025-01-01T00:00:00")
             .turned(90)
             .onPaper(kPaper),
         "Turned page words", std::floor(495 * 0.62), std::floor(595 * (495 * 0.62 / 842))},
    };
    for (const auto& [file, spec, words, width, height] : cases)
        materials.write(file, makePDF(spec));
    materials.write("Lease.pdf", makePDF(PDFSpec({"Landlord: Harriet\nDunmore, 1 May 2025"},
                                                 "2025-01-01T00:00:00")));

    std::string pdf = exportPDF("harriet dunmore");
    EXPECT_TRUE(testing::qpdfCheckPasses(pdf));
    auto read = testing::readPDF(pdf);
    EXPECT_EQ(read.allFlat().find("Dunmore"), std::string::npos) << read.allFlat();
    EXPECT_GE(pageWith(read, "(First page not shown: it holds hidden text.)"), 0);
    EXPECT_EQ(pageWith(read, "Second page words"), -1) << "only the first page is drawn";
    for (const auto& [file, spec, words, width, height] : cases) {
        SCOPED_TRACE(file);
        int page = pageWith(read, words);
        ASSERT_GE(page, 0) << read.allFlat();
        testing::Raster raster = testing::rasterise(pdf, page, 1);
        testing::Box paper =
            testing::boxOf(raster, kPaper, {0, 0, raster.width - 1, raster.height - 1});
        ASSERT_FALSE(paper.empty());
        EXPECT_NEAR(paper.maxX - paper.minX + 1, width, 2);
        EXPECT_NEAR(paper.maxY - paper.minY + 1, height, 2);
    }
}

// The window scans first and exports later: a document that became
// unreadable in between costs its page, never the export.
TEST_F(Documents, ADocumentDamagedAfterTheScanCostsOnlyItsPage) {
    materials.write("Lease.pdf",
                    makePDF(PDFSpec({"Tenancy agreement 1 May 2025"}, "2025-01-01T00:00:00")));
    auto read =
        testing::readPDF(exportAfterScan([&] { materials.write("Lease.pdf", "no longer a PDF"); }));
    EXPECT_GE(pageWith(read, "Document: Lease"), 0) << read.allFlat();
    EXPECT_EQ(pageWith(read, "Tenancy agreement 1 May"), -1);
}

}  // namespace
}  // namespace kinfolio
