#include <cmath>

#include "layout/layout.h"
#include "media/documents.h"

namespace kinfolio {

std::vector<Piece> Layout::documentPiece(const std::string& path) {
    // Its text is only needed to find hidden words in it.
    auto page = Scanner::firstPageFacts(path, hiddenRuleCount() > 0);
    if (!page) return {};
    // A page drawn as it is prints its own words, which no hidden-text rule
    // can rewrite: a page that holds one is left out and says so.
    if (redact(page->text) != page->text)
        return textBlock("(First page not shown: it holds hidden text.)", 9, false, Colours::muted,
                         0, contentWidth());
    const double width = page->width, height = page->height;
    if (!(width >= 1 && height >= 1)) return {};
    double scale = std::min({contentWidth() * 0.62 / width, 360 / height, 1.5});
    double drawnWidth = std::floor(width * scale), drawnHeight = std::floor(height * scale);
    if (drawnWidth < 1 || drawnHeight < 1) return {};

    Piece piece;
    piece.height = drawnHeight + 10;
    piece.draw = [path, x = margin, width, height, drawnWidth, drawnHeight](cairo_t* cr,
                                                                            double top) {
        // Opened again here and let go at once: an export of hundreds of
        // documents never holds them all open. Gone since the layout, the
        // page leaves its space empty.
        cairo_save(cr);
        bool drawn = Scanner::drawFirstPage(cr, path, [&] {
            // A sheet of paper, so a page without its own background reads
            // as one; the page goes on it as vectors: its text stays text,
            // its images keep their own compression.
            cairo_rectangle(cr, x, top, drawnWidth, drawnHeight);
            setSource(cr, Colours::page);
            cairo_fill_preserve(cr);
            cairo_clip(cr);
            cairo_translate(cr, x, top);
            cairo_scale(cr, drawnWidth / width, drawnHeight / height);
        });
        cairo_restore(cr);
        if (!drawn) return;
        cairo_save(cr);
        cairo_rectangle(cr, x - 0.25, top - 0.25, drawnWidth + 0.5, drawnHeight + 0.5);
        setSource(cr, Colours::rule);
        cairo_set_line_width(cr, 0.5);
        cairo_stroke(cr);
        cairo_restore(cr);
    };
    return {std::move(piece)};
}

}  // namespace kinfolio
