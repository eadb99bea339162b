#include <cairo-pdf.h>

#include <memory>

#include "layout/layout.h"
#include "model/text.h"

namespace kinfolio {

namespace {

cairo_status_t collect(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

[[noreturn]] void cannotCreate() {
    throw EvidenceError::invalid("Could not create the PDF.");
}

}  // namespace

std::string Layout::render(const std::vector<Page>& pages, const PDFExporter::Progress& progress,
                           size_t begin, size_t end) {
    const double width = contentWidth();
    std::string names = joinNonEmpty({s.applicant, s.partner}, " & ");
    std::string title = s.title.empty() ? "Relationship evidence" : s.title;
    auto headLeft =
        lines(redact(joinNonEmpty({title, names}, " \u00b7 ")), 8.5, width * 0.6, Colours::muted);
    std::vector<Line> headRight;
    if (!s.reference.empty())
        headRight = lines(redact(s.reference), 8.5, width * 0.38, Colours::muted);
    auto footer = lines("Selected by the applicant \u00b7 not a complete history", 8, width * 0.7,
                        Colours::muted);

    std::string bytes;
    cairo_surface_t* surface =
        cairo_pdf_surface_create_for_stream(collect, &bytes, size.width, size.height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        cannotCreate();
    }
    cairo_t* cr = cairo_create(surface);
    const int n = static_cast<int>(pages.size());
    const int first = static_cast<int>(std::min(begin, pages.size()));
    const int last = static_cast<int>(std::min(end, pages.size()));
    drawnPages_ = {first + 1, last};
    std::map<std::string, bool> hasDestination;
    for (int i = first; i < last; ++i) {
        setSource(cr, Colours::page);
        cairo_paint(cr);
        // A later part of a split export numbers on in a viewer's page box.
        // Set after the first drawing: cairo starts the page then, and
        // starting it forgets a label set before. (cairo leaves out labels
        // that number from 1, which would leave the first part's pages
        // without any.)
        if (first > 0) cairo_pdf_surface_set_page_label(surface, std::to_string(i + 1).c_str());
        if (i > 0) {
            const Line& left = headLeft.front();
            drawLine(cr, left, margin, 50 + left.ascent);
            if (!headRight.empty()) {
                const Line& right = headRight.front();
                drawLine(cr, right, size.width - margin - right.width, 50 + right.ascent);
            }
            setSource(cr, Colours::rule);
            cairo_set_line_width(cr, 0.5);
            cairo_move_to(cr, margin, 66);
            cairo_line_to(cr, size.width - margin, 66);
            cairo_stroke(cr);
        }
        for (const auto& placed : pages[i]) {
            if (placed.piece.marker) {
                std::string dest = "name='" + destination(*placed.piece.marker) +
                                   "' x=0 y=" + std::to_string(placed.top);
                cairo_tag_begin(cr, CAIRO_TAG_DEST, dest.c_str());
                cairo_tag_end(cr, CAIRO_TAG_DEST);
                hasDestination[*placed.piece.marker] = true;
            }
            if (placed.piece.draw) {
                cairo_save(cr);
                placed.piece.draw(cr, placed.top);
                cairo_restore(cr);
            }
        }
        const Line& note = footer.front();
        drawLine(cr, note, margin, size.height - 50 + note.ascent);
        auto label = lines("Page " + std::to_string(i + 1) + " of " + std::to_string(n), 8, 120,
                           Colours::muted);
        const Line& number = label.front();
        drawLine(cr, number, size.width - margin - number.width, size.height - 50 + number.ascent);
        cairo_show_page(cr);
        if (progress)
            progress(static_cast<size_t>(i - first) + 1, static_cast<size_t>(last - first));
    }
    drawnPages_ = {1, INT32_MAX};

    // Bookmarks: one per section and one for the appendix.
    std::vector<std::pair<std::string, std::string>> outline;
    for (const auto& section : sections())
        outline.emplace_back(section.title, section.key);
    outline.emplace_back("How this file was prepared", "appendix");
    for (const auto& [name, marker] : outline) {
        if (!hasDestination.count(marker)) continue;
        std::string link = "dest='" + destination(marker) + "'";
        cairo_pdf_surface_add_outline(surface, CAIRO_PDF_OUTLINE_ROOT, name.c_str(), link.c_str(),
                                      static_cast<cairo_pdf_outline_flags_t>(0));
    }

    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_status_t status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) cannotCreate();
    return bytes;
}

}  // namespace kinfolio
