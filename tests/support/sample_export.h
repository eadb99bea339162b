#pragma once

// Sample exports for the splitting tests and benchmark: documents shaped like
// the exporter's output, drawn with cairo and rewritten through QPDF.

#include <cairo-pdf.h>
#include <cairo.h>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "example/example_parts.h"

namespace kinfolio::Sample {

// One page: its size in points and a noise image of the given pixels (noise
// does not compress, as a photo's JPEG does not, so the pixels set the page's
// weight); no image when either side is 0.
struct Page {
    int imageWidth = 0, imageHeight = 0;
    double width = 400, height = 500;
};

inline std::string pageLabel(size_t i, size_t n) {
    return "Page " + std::to_string(i + 1) + " of " + std::to_string(n);
}

inline void drawNoise(cairo_t* cr, const Page& page, std::mt19937& random) {
    cairo_surface_t* image =
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, page.imageWidth, page.imageHeight);
    cairo_surface_flush(image);
    unsigned char* pixels = cairo_image_surface_get_data(image);
    int stride = cairo_image_surface_get_stride(image);
    for (int y = 0; y < page.imageHeight; ++y) {
        auto* row = reinterpret_cast<uint32_t*>(pixels + y * stride);
        for (int x = 0; x < page.imageWidth; ++x)
            row[x] = random() & 0xffffff;
    }
    cairo_surface_mark_dirty(image);
    cairo_save(cr);
    cairo_translate(cr, 20, 80);
    double scale = (page.width - 40) / page.imageWidth;
    cairo_scale(cr, scale, scale);
    cairo_set_source_surface(cr, image, 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
    cairo_surface_destroy(image);
}

// Every page carries the label "Page i of n" inside the named destination
// "page-<index>"; the first and last pages hold a row of links to every page
// (the contents); the outline has "Section i" per page, open on odd indices,
// and a child "Detail i" with an explicit page destination on every third.
inline std::string makeExport(const std::vector<Page>& pages, unsigned seed = 1) {
    std::string raw;
    cairo_surface_t* surface =
        cairo_pdf_surface_create_for_stream(ExampleFolder::appendBytes, &raw, 400, 500);
    cairo_t* cr = cairo_create(surface);
    std::mt19937 random(seed);
    size_t n = pages.size();
    for (size_t i = 0; i < n; ++i) {
        cairo_pdf_surface_set_size(surface, pages[i].width, pages[i].height);
        std::string dest = "name='page-" + std::to_string(i) + "'";
        cairo_tag_begin(cr, CAIRO_TAG_DEST, dest.c_str());
        cairo_move_to(cr, 20, pages[i].height - 20);
        cairo_show_text(cr, pageLabel(i, n).c_str());
        cairo_tag_end(cr, CAIRO_TAG_DEST);
        if (i == 0 || i + 1 == n) {
            for (size_t j = 0; j < n; ++j) {
                std::string link = "dest='page-" + std::to_string(j) + "'";
                cairo_tag_begin(cr, CAIRO_TAG_LINK, link.c_str());
                cairo_move_to(cr, 20 + 40 * (j % 8), 30 + 12 * (j / 8));
                cairo_show_text(cr, std::to_string(j + 1).c_str());
                cairo_tag_end(cr, CAIRO_TAG_LINK);
            }
        }
        if (pages[i].imageWidth > 0 && pages[i].imageHeight > 0) drawNoise(cr, pages[i], random);
        std::string title = "Section " + std::to_string(i + 1);
        std::string target = "dest='page-" + std::to_string(i) + "'";
        int flags = i % 2 ? CAIRO_PDF_OUTLINE_FLAG_OPEN : 0;
        int id = cairo_pdf_surface_add_outline(surface, CAIRO_PDF_OUTLINE_ROOT, title.c_str(),
                                               target.c_str(), cairo_pdf_outline_flags_t(flags));
        if (i % 3 == 0) {
            std::string detail = "Detail " + std::to_string(i + 1);
            std::string page = "page=" + std::to_string(i + 1);
            cairo_pdf_surface_add_outline(surface, id, detail.c_str(), page.c_str(),
                                          cairo_pdf_outline_flags_t(0));
        }
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_status_t status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error("cairo could not draw the sample");

    // The exporter's final rewrite, which also repairs cairo's cross-reference table.
    QPDF qpdf;
    qpdf.setSuppressWarnings(true);
    qpdf.processMemoryFile("sample", raw.data(), raw.size());
    QPDFWriter writer(qpdf);
    writer.setOutputMemory();
    writer.setDeterministicID(true);
    writer.write();
    auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

}  // namespace kinfolio::Sample
