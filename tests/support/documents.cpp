#include "support/documents.h"

#include <cairo-pdf.h>
#include <pango/pangocairo.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include "example/example_parts.h"

namespace kinfolio::testing {

std::string makePDF(const PDFSpec& spec) {
    double width = 595, height = 842;
    std::string pdf;
    cairo_surface_t* surface =
        cairo_pdf_surface_create_for_stream(ExampleFolder::appendBytes, &pdf, width, height);
    if (spec.created)
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE,
                                       spec.created->c_str());
    cairo_t* cr = cairo_create(surface);
    PangoLayout* layout = pango_cairo_create_layout(cr);
    PangoFontDescription* font = pango_font_description_from_string("Noto Sans 11");
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    pango_layout_set_width(layout, static_cast<int>((width - 120) * PANGO_SCALE));
    for (const auto& text : spec.pages) {
        if (spec.paper) {
            cairo_set_source_rgb(cr, (*spec.paper >> 16 & 0xff) / 255.0,
                                 (*spec.paper >> 8 & 0xff) / 255.0, (*spec.paper & 0xff) / 255.0);
            cairo_paint(cr);
            cairo_set_source_rgb(cr, 0, 0, 0);
        }
        if (!text.empty()) {
            pango_layout_set_text(layout, text.c_str(), -1);
            cairo_move_to(cr, 60, 60);
            pango_cairo_show_layout(cr, layout);
        }
        cairo_show_page(cr);
    }
    g_object_unref(layout);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    if (spec.created && !spec.password && spec.rotate == 0) return pdf;

    // What cairo cannot write (no creation date, a password, a turned page)
    // is done by rewriting the file with QPDF.
    QPDF qpdf;
    qpdf.processMemoryFile("made", pdf.data(), pdf.size());
    if (!spec.created) qpdf.getTrailer().getKey("/Info").removeKey("/CreationDate");
    if (spec.rotate != 0)
        QPDFPageDocumentHelper(qpdf).getAllPages().front().rotatePage(spec.rotate, false);
    QPDFWriter writer(qpdf);
    writer.setOutputMemory();
    if (spec.password)
        writer.setR6EncryptionParameters(spec.password->c_str(), "owner", true, true, true, true,
                                         true, true, qpdf_r3p_full, true);
    writer.write();
    auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

}  // namespace kinfolio::testing
