#include <gtest/gtest.h>

#include "layout/layout.h"
#include "support/pdf_reader.h"

namespace kinfolio {
namespace {

using testing::readPDF;

// Pieces that print their own name, so the rendered pages show where each went.
class PaginationTest : public ::testing::Test {
protected:
    Layout layout{ExportInput{}};

    Piece named(const std::string& name, double height, bool keep = false, bool brk = false) {
        auto typeset = layout.lines(name, 10, 400);
        Piece piece;
        piece.height = height;
        piece.keepWithNext = keep;
        piece.breakBefore = brk;
        piece.draw = [this, line = typeset.front()](cairo_t* cr, double top) {
            layout.drawLine(cr, line, 50, top + line.ascent);
        };
        return piece;
    }

    testing::ReadPDF pagesOf(const std::vector<Piece>& pieces) {
        return readPDF(layout.render(paginate(pieces, 842).pages));
    }
};

// A break before the first piece, or before each of several pieces in a
// row, never leaves a blank page.
TEST_F(PaginationTest, BreaksNeverLeaveABlankPage) {
    auto pdf = pagesOf({named("alpha", 20, false, true), named("beta", 20)});
    ASSERT_EQ(pdf.pages.size(), 1u);
    EXPECT_NE(pdf.pages[0].find("alpha\nbeta"), std::string::npos) << pdf.pages[0];
    auto result = paginate(
        {named("alpha", 20), named("beta", 20, false, true), named("gamma", 20, false, true)}, 842);
    ASSERT_EQ(result.pages.size(), 3u);
    for (const auto& page : result.pages) {
        ASSERT_EQ(page.size(), 1u);
        EXPECT_EQ(page[0].top, 76);
    }
}

}  // namespace
}  // namespace kinfolio
