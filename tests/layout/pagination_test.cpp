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
    const double bottom = 842 - 72;

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

TEST_F(PaginationTest, KeepWithNextChainMovesWhole) {
    // 600 used; the chain of three needs 150 of the 94 left.
    auto pdf = pagesOf({named("filler", 600), named("head", 50, true), named("middle", 50, true),
                        named("tail", 50), named("after", 20)});
    ASSERT_EQ(pdf.pages.size(), 2u);
    EXPECT_EQ(pdf.pages[0].find("head"), std::string::npos);
    for (const char* name : {"head", "middle", "tail", "after"})
        EXPECT_NE(pdf.pages[1].find(name), std::string::npos) << name;
}

TEST_F(PaginationTest, ChainTallerThanAPageStartsOnAFreshPageAndRunsOn) {
    std::vector<Piece> pieces = {named("filler", 100)};
    for (int i = 0; i < 10; ++i)
        pieces.push_back(named("chain" + std::to_string(i), 100, i < 9));
    pieces.push_back(named("after", 20));
    auto result = paginate(pieces, 842);
    ASSERT_GE(result.pages.size(), 2u);
    EXPECT_EQ(result.pages[0].size(), 1u);
    EXPECT_EQ(result.pages[1].front().top, 76);
    size_t placed = 0;
    for (const auto& page : result.pages) {
        EXPECT_FALSE(page.empty());
        placed += page.size();
    }
    EXPECT_EQ(placed, pieces.size());
    auto pdf = readPDF(layout.render(result.pages));
    EXPECT_NE(pdf.pages[1].find("chain0"), std::string::npos);
    EXPECT_NE(pdf.pages.back().find("after"), std::string::npos);
}

TEST_F(PaginationTest, PieceExactlyFillingToTheBottomStays) {
    auto exact = paginate({named("filler", 600), named("last", bottom - 76 - 600)}, 842);
    EXPECT_EQ(exact.pages.size(), 1u);
    auto over = paginate({named("filler", 600), named("last", bottom - 76 - 600 + 0.5)}, 842);
    EXPECT_EQ(over.pages.size(), 2u);
    // Too tall for any page: placed on the empty page, not pushed on forever.
    auto huge = paginate({named("huge", 2000), named("after", 10)}, 842);
    ASSERT_EQ(huge.pages.size(), 2u);
    EXPECT_EQ(huge.pages[0].size(), 1u);
}

TEST_F(PaginationTest, MarkersRecordTheReceivingPage) {
    Piece a = named("a", 650);
    Piece b = named("b", 100);
    b.marker = "second";
    Piece c = named("c", 10);
    c.marker = "first";
    auto result = paginate({c, a, b}, 842);
    EXPECT_EQ(result.markers.at("first"), 1);
    EXPECT_EQ(result.markers.at("second"), 2);
}

TEST_F(PaginationTest, TwelveLineBubbleCutByAPageBreakHasSquareCornersAtTheCut) {
    std::string text;
    for (int i = 1; i <= 12; ++i)
        text += (i > 1 ? "\n" : "") + std::string("line ") + std::to_string(i);
    std::vector<Piece> pieces = {named("filler", 600)};
    auto bubble = layout.bubble(text, false);
    ASSERT_EQ(bubble.size(), 12u);
    pieces.insert(pieces.end(), bubble.begin(), bubble.end());
    std::string bytes = layout.render(paginate(pieces, 842).pages);
    auto pdf = readPDF(bytes);
    ASSERT_EQ(pdf.pages.size(), 2u);
    EXPECT_NE(pdf.pages[0].find("line 1\n"), std::string::npos);
    EXPECT_NE(pdf.pages[1].find("line 12"), std::string::npos);

    const double scale = 2;
    const uint32_t fill = 0xEBEBEB;  // gray 0.92
    const uint32_t white = 0xFFFFFF;
    const testing::Box content{100, 150, 1090, 1540};  // the content box, in pixels
    auto before = testing::rasterise(bytes, 0, scale);
    auto cut = testing::boxOf(before, fill, content);
    ASSERT_FALSE(cut.empty());
    EXPECT_EQ(cut.minX, 100);
    EXPECT_EQ(before.at(cut.minX, cut.minY), white);  // rounded top
    EXPECT_EQ(before.at(cut.maxX, cut.minY), white);
    EXPECT_NE(before.at(cut.minX + 1, cut.maxY), white);  // square bottom
    EXPECT_NE(before.at(cut.maxX - 1, cut.maxY), white);
    EXPECT_LE(cut.maxY, bottom * scale);

    auto after = testing::rasterise(bytes, 1, scale);
    auto rest = testing::boxOf(after, fill, content);
    ASSERT_FALSE(rest.empty());
    EXPECT_EQ(rest.minY, 76 * scale);
    EXPECT_NE(after.at(rest.minX + 1, rest.minY), white);  // square top
    EXPECT_NE(after.at(rest.maxX - 1, rest.minY), white);
    EXPECT_EQ(after.at(rest.minX, rest.maxY), white);  // rounded bottom
    EXPECT_EQ(after.at(rest.maxX, rest.maxY), white);
}

// A word or URL wider than the column breaks between characters, and each
// line draws one glyph per character of its text: no hyphen is added at a
// break, so the lines read one after another give exactly what was written.
// (A text extractor cannot show this: it files an added hyphen under the
// character before it.)
TEST_F(PaginationTest, LongWordsAndURLsBreakWithoutAddedCharacters) {
    struct Case {
        const char* name;
        std::string text;
    };
    const Case cases[] = {
        {"URL", "https://example.com/photos/2025/summer-holiday/IMG_20250714_182205.jpg"},
        {"word", "Pneumonoultramicroscopicsilicovolcanoconiosis"},
    };
    for (const auto& c : cases) {
        auto typeset = layout.lines(c.text, 10, 60);
        ASSERT_GT(typeset.size(), 2u) << c.name;
        std::string joined;
        for (const auto& line : typeset) {
            const char* text = pango_layout_get_text(line.layout.get()) + line.line->start_index;
            int glyphs = 0;
            for (GSList* run = line.line->runs; run; run = run->next)
                glyphs += static_cast<PangoGlyphItem*>(run->data)->glyphs->num_glyphs;
            std::string piece(text, static_cast<size_t>(line.line->length));
            EXPECT_EQ(glyphs, g_utf8_strlen(text, line.line->length)) << c.name << ": " << piece;
            joined += piece;
        }
        EXPECT_EQ(joined, c.text) << c.name;
    }
}

}  // namespace
}  // namespace kinfolio
