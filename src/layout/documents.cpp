#include <poppler.h>

#include <cmath>
#include <memory>

#include "layout/layout.h"

namespace kinfolio {

namespace {

struct Unref {
    void operator()(gpointer object) const {
        if (object) g_object_unref(object);
    }
};
using PagePtr = std::unique_ptr<PopplerPage, Unref>;

// The first page of the PDF at `path`; it keeps its document (and the file)
// open for as long as it lives, so it is opened where it is used and let go
// at once: an export of hundreds of documents never holds them all open.
// None when the file is gone or cannot be opened.
PagePtr firstPage(const std::string& path) {
    char* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
    if (!uri) return nullptr;
    GError* error = nullptr;
    PopplerDocument* document = poppler_document_new_from_file(uri, nullptr, &error);
    g_free(uri);
    if (error) g_error_free(error);
    if (!document) return nullptr;
    PopplerPage* page = poppler_document_get_n_pages(document) > 0
                            ? poppler_document_get_page(document, 0)
                            : nullptr;
    g_object_unref(document);  // the page holds its own reference
    return PagePtr(page);
}

}  // namespace

std::vector<Piece> Layout::documentPiece(const std::string& path) {
    double width = 0, height = 0;
    {
        PagePtr page = firstPage(path);
        if (!page) return {};
        // A page drawn as it is prints its own words, which no hidden-text
        // rule can rewrite: a page that holds one is left out and says so.
        if (hiddenRuleCount() > 0) {
            char* text = poppler_page_get_text(page.get());
            std::string words = text ? text : "";
            g_free(text);
            if (redact(words) != words)
                return textBlock("(First page not shown: it holds hidden text.)", 9, false,
                                 Colours::muted, 0, contentWidth());
        }
        // Already in the orientation the page is shown in: a page turned by
        // 90 or 270 degrees reports its width and height swapped.
        poppler_page_get_size(page.get(), &width, &height);
    }
    if (!(width >= 1 && height >= 1)) return {};
    double scale = std::min({contentWidth() * 0.62 / width, 360 / height, 1.5});
    double drawnWidth = std::floor(width * scale), drawnHeight = std::floor(height * scale);
    if (drawnWidth < 1 || drawnHeight < 1) return {};

    Piece piece;
    piece.height = drawnHeight + 10;
    piece.draw = [path, x = margin, width, height, drawnWidth, drawnHeight](cairo_t* cr,
                                                                            double top) {
        PagePtr page = firstPage(path);
        if (!page) return;  // gone since the layout: the space stays empty
        cairo_save(cr);
        // A sheet of paper, so a page without its own background reads as one.
        cairo_rectangle(cr, x, top, drawnWidth, drawnHeight);
        setSource(cr, Colours::page);
        cairo_fill_preserve(cr);
        cairo_clip(cr);
        cairo_translate(cr, x, top);
        cairo_scale(cr, drawnWidth / width, drawnHeight / height);
        // Vectors onto our page: its text stays text, its images keep their
        // own compression. Printing mode draws what the page would print.
        poppler_page_render_for_printing(page.get(), cr);
        cairo_restore(cr);
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
