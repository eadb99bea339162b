#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include "example/example_parts.h"

// The example's PDF documents: the e-ticket of the couple's flights to
// Bergen, dated on its first page, and the tenancy agreement of their flat,
// two pages long (only the first is shown).
namespace kinfolio::ExampleFolder {

namespace {

struct Text {
    const char* text;
    double size = 10;
    bool bold = false;
    double after = 4;  // points below the text
};

using Sheet = std::vector<Text>;

constexpr double kWidth = 595, kHeight = 842, kSide = 64;

// A document as an office program or a booking system writes one: A4 pages
// of text with a coloured band at the top of the first. The creation date
// is fixed, so the example's bytes do not follow the clock.
std::string document(const std::vector<Sheet>& sheets, const char* title, const char* band,
                     const char* created) {
    std::string pdf;
    cairo_surface_t* surface =
        cairo_pdf_surface_create_for_stream(appendBytes, &pdf, kWidth, kHeight);
    cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, title);
    cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, created);
    cairo_t* cr = cairo_create(surface);
    PangoLayout* layout = pango_cairo_create_layout(cr);
    pango_layout_set_width(layout, static_cast<int>((kWidth - 2 * kSide) * PANGO_SCALE));
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD);

    bool first = true;
    for (const auto& sheet : sheets) {
        double top = 72;
        if (first && band) {
            cairo_set_source_rgb(cr, 0.11, 0.25, 0.45);
            cairo_rectangle(cr, 0, 0, kWidth, 96);
            cairo_fill(cr);
            PangoFontDescription* font = pango_font_description_from_string("Noto Sans Bold 20");
            pango_layout_set_font_description(layout, font);
            pango_font_description_free(font);
            pango_layout_set_text(layout, band, -1);
            cairo_set_source_rgb(cr, 1, 1, 1);
            cairo_move_to(cr, kSide, 32);
            pango_cairo_show_layout(cr, layout);
            top = 130;
        }
        first = false;
        for (const auto& text : sheet) {
            PangoFontDescription* font =
                pango_font_description_from_string(text.bold ? "Noto Sans Bold" : "Noto Sans");
            pango_font_description_set_size(font, static_cast<int>(text.size * PANGO_SCALE));
            pango_layout_set_font_description(layout, font);
            pango_font_description_free(font);
            pango_layout_set_text(layout, text.text, -1);
            cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
            cairo_move_to(cr, kSide, top);
            pango_cairo_show_layout(cr, layout);
            int w = 0, h = 0;
            pango_layout_get_size(layout, &w, &h);
            top += static_cast<double>(h) / PANGO_SCALE + text.after;
        }
        cairo_show_page(cr);
    }
    g_object_unref(layout);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    return pdf;
}

}  // namespace

void addDocuments(Files& out) {
    out.emplace_back(
        "Documents/E-ticket NS4KQ2.pdf",
        document({{
                     {"Electronic ticket receipt", 16, true, 10},
                     {"Booking reference: NS4KQ2\nIssued: 20 July 2024 by Northern Skies "
                      "Airways, London",
                      10, false, 14},
                     {"Passengers", 11, true},
                     {"MS MAYA OKAFOR · ticket 617 2400 558 171\nMR JONAS BERG · ticket 617 "
                      "2400 558 172",
                      10, false, 14},
                     {"Flights", 11, true},
                     {"NS 214  London Gatwick (LGW) → Bergen (BGO)\nDeparture 14 August 2024 "
                      "07:25 · arrival 10:35 · economy, 1 bag each",
                      10, false, 8},
                     {"NS 219  Bergen (BGO) → London Gatwick (LGW)\nDeparture 21 August 2024 "
                      "18:05 · arrival 19:20 · economy, 1 bag each",
                      10, false, 14},
                     {"Total paid: GBP 412.60 by card ending 4417", 10, true, 14},
                     {"Check-in opens 24 hours before departure. Please bring the passport "
                      "named on this ticket.",
                      9},
                 }},
                 "E-ticket NS4KQ2", "Northern Skies Airways", "2024-07-20T12:14:00"));

    out.emplace_back(
        "Documents/Tenancy agreement - 12 Elm Road.pdf",
        document({{
                      {"Assured Shorthold Tenancy Agreement", 16, true, 10},
                      {"This agreement is made on 12 December 2024 between the landlord and the "
                       "tenants named below.",
                       10, false, 14},
                      {"Landlord", 11, true},
                      {"Harriet Dunmore, 4 Chapel Lane, Leeds LS6 2QT", 10, false, 10},
                      {"Tenants", 11, true},
                      {"Maya Okafor and Jonas Berg, jointly", 10, false, 10},
                      {"Property", 11, true},
                      {"12 Elm Road, Flat 2, Leeds LS6 1AB", 10, false, 10},
                      {"Term and rent", 11, true},
                      {"A term of 12 months starting on 18 January 2025. The rent is £1,150 per "
                       "calendar month, payable on the 18th of each month by standing order. "
                       "Deposit: £1,300, protected with a government-approved scheme.",
                       10, false, 10},
                      {"Both tenants are jointly and severally liable for the rent and for the "
                       "obligations of this agreement.",
                       10},
                  },
                  {
                      {"Signatures", 11, true, 10},
                      {"Landlord: Harriet Dunmore      Date: 12 December 2024", 10, false, 8},
                      {"Tenant: Maya Okafor      Date: 12 December 2024", 10, false, 8},
                      {"Tenant: Jonas Berg      Date: 12 December 2024", 10},
                  }},
                 "Tenancy agreement", nullptr, "2024-12-12T18:30:00"));
}

}  // namespace kinfolio::ExampleFolder
