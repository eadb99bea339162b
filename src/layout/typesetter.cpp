#include "layout/typesetter.h"

#include <hb-ot.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "model/text.h"

namespace kinfolio {

namespace {

// Colour emoji are bitmaps; drawn straight into the PDF, cairo would store
// them at 72 ppi. Drawn into an image this many times larger and painted
// scaled down, they print sharp.
constexpr double kEmojiScale = 8;

double fromPango(int units) {
    return static_cast<double>(units) / PANGO_SCALE;
}

std::string validText(std::string_view text) {
    return isValidUtf8(text) ? std::string(text) : repairUtf8(text);
}

}  // namespace

Typesetter::Typesetter() {
    // Not the thread's default map: pieces typeset on a helper thread are
    // drawn on another one, so the map goes with the instance.
    fontMap_ = pango_cairo_font_map_new();
    context_ = pango_font_map_create_context(fontMap_);
    // Pango assumes 96 dpi; layout units here are points.
    pango_cairo_context_set_resolution(context_, 72);
    pango_context_set_round_glyph_positions(context_, FALSE);
    pango_context_set_language(context_, pango_language_from_string("en"));
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context_, options);
    cairo_font_options_destroy(options);
    noHyphens_.reset(pango_attr_list_new(), pango_attr_list_unref);
    pango_attr_list_insert(noHyphens_.get(), pango_attr_insert_hyphens_new(FALSE));
}

Typesetter::~Typesetter() {
    for (auto& [key, font] : fonts_)
        pango_font_description_free(font.description);
    g_object_unref(context_);
    g_object_unref(fontMap_);
}

Typesetter::Font& Typesetter::fontEntry(double size, bool bold, bool italic) {
    auto key = std::make_tuple(size, bold, italic);
    auto found = fonts_.find(key);
    if (found != fonts_.end()) return found->second;
    Font font;
    font.description = pango_font_description_from_string("Noto Sans,DejaVu Sans");
    pango_font_description_set_absolute_size(font.description, size * PANGO_SCALE);
    pango_font_description_set_weight(font.description,
                                      bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font.description,
                                     italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    PangoFontMetrics* metrics = pango_context_get_metrics(context_, font.description, nullptr);
    int gap = pango_font_metrics_get_height(metrics) -
              (pango_font_metrics_get_ascent(metrics) + pango_font_metrics_get_descent(metrics));
    font.leading = std::max(0.0, fromPango(gap));
    pango_font_metrics_unref(metrics);
    return fonts_.emplace(key, font).first->second;
}

const PangoFontDescription* Typesetter::font(double size, bool bold, bool italic) {
    return fontEntry(size, bold, italic).description;
}

std::vector<Line> Typesetter::lines(std::string_view text, double size, double width, Paint colour,
                                    bool bold, bool italic) {
    const Font& font = fontEntry(size, bold, italic);
    const double gap = std::max(font.leading, size * 0.25);
    std::vector<Line> result;
    std::string all = validText(text);
    size_t start = 0;
    while (start <= all.size()) {
        size_t end = all.find('\n', start);
        if (end == std::string::npos) end = all.size();
        std::string paragraph = all.substr(start, end - start);
        if (paragraph.empty()) paragraph = " ";
        start = end + 1;

        std::shared_ptr<PangoLayout> layout(pango_layout_new(context_), g_object_unref);
        pango_layout_set_font_description(layout.get(), font.description);
        pango_layout_set_width(layout.get(), static_cast<int>(width * PANGO_SCALE));
        // Words first; a run too long for the width (a URL, a long word)
        // breaks between characters. Pango would add a hyphen at such a break;
        // the document prints exactly what was written, so it adds nothing.
        pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
        pango_layout_set_attributes(layout.get(), noHyphens_.get());
        pango_layout_set_text(layout.get(), paragraph.data(), static_cast<int>(paragraph.size()));

        PangoLayoutIter* iter = pango_layout_get_iter(layout.get());
        do {
            PangoRectangle logical;
            pango_layout_iter_get_line_extents(iter, nullptr, &logical);
            int baseline = pango_layout_iter_get_baseline(iter);
            double ascent = fromPango(baseline - logical.y);
            double descent = fromPango(logical.y + logical.height - baseline);
            Line line;
            line.layout = layout;
            line.line = pango_layout_iter_get_line_readonly(iter);
            line.width = fromPango(logical.width);
            line.ascent = ascent;
            line.height = std::ceil(ascent + descent + gap);
            line.colour = colour;
            result.push_back(std::move(line));
        } while (pango_layout_iter_next_line(iter));
        pango_layout_iter_free(iter);
    }
    return result;
}

bool Typesetter::isColourFont(PangoFont* font) {
    auto found = colourFonts_.find(font);
    if (found != colourFonts_.end()) return found->second;
    hb_face_t* face = hb_font_get_face(pango_font_get_hb_font(font));
    bool colour =
        hb_ot_color_has_png(face) || hb_ot_color_has_layers(face) || hb_ot_color_has_svg(face);
    colourFonts_.emplace(font, colour);
    return colour;
}

void Typesetter::draw(cairo_t* cr, const Line& line, double x, double baseline) {
    setSource(cr, line.colour);
    bool anyColour = false;
    for (GSList* r = line.line->runs; r && !anyColour; r = r->next)
        anyColour = isColourFont(static_cast<PangoGlyphItem*>(r->data)->item->analysis.font);
    if (!anyColour) {
        cairo_move_to(cr, x, baseline);
        pango_cairo_show_layout_line(cr, line.line);
        return;
    }
    // Runs are in visual order; each is drawn at its own advance.
    const char* text = pango_layout_get_text(line.layout.get());
    double offset = 0;
    for (GSList* r = line.line->runs; r; r = r->next) {
        auto* run = static_cast<PangoGlyphItem*>(r->data);
        if (isColourFont(run->item->analysis.font)) {
            drawColourRun(cr, text, run, x + offset, baseline);
        } else {
            setSource(cr, line.colour);
            cairo_move_to(cr, x + offset, baseline);
            pango_cairo_show_glyph_item(cr, text, run);
        }
        offset += fromPango(pango_glyph_string_get_width(run->glyphs));
    }
}

void Typesetter::drawColourRun(cairo_t* cr, const char* text, PangoGlyphItem* run, double x,
                               double baseline) {
    PangoRectangle ink, logical;
    pango_glyph_string_extents(run->glyphs, run->item->analysis.font, &ink, &logical);
    pango_extents_to_pixels(&ink, nullptr);
    pango_extents_to_pixels(&logical, nullptr);
    PangoRectangle box;
    box.x = std::min(ink.x, logical.x);
    box.y = std::min(ink.y, logical.y);
    box.width = std::max(ink.x + ink.width, logical.x + logical.width) - box.x;
    box.height = std::max(ink.y + ink.height, logical.y + logical.height) - box.y;
    if (box.width <= 0 || box.height <= 0) return;
    int w = static_cast<int>(std::ceil(box.width * kEmojiScale));
    int h = static_cast<int>(std::ceil(box.height * kEmojiScale));
    cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
    cairo_t* ic = cairo_create(image);
    cairo_scale(ic, kEmojiScale, kEmojiScale);
    cairo_translate(ic, -box.x, -box.y);
    cairo_move_to(ic, 0, 0);
    pango_cairo_show_glyph_item(ic, text, run);
    cairo_destroy(ic);
    cairo_surface_flush(image);

    // The same emoji drawn again is stored once in the file.
    std::string key = "emoji";
    PangoFontDescription* described = pango_font_describe(run->item->analysis.font);
    char* name = pango_font_description_to_string(described);
    key += name;
    g_free(name);
    pango_font_description_free(described);
    for (int i = 0; i < run->glyphs->num_glyphs; ++i)
        key += "-" + std::to_string(run->glyphs->glyphs[i].glyph);
    key += "@" + std::to_string(w) + "x" + std::to_string(h);
    auto* id = static_cast<unsigned char*>(std::malloc(key.size()));
    std::memcpy(id, key.data(), key.size());
    cairo_surface_set_mime_data(image, CAIRO_MIME_TYPE_UNIQUE_ID, id, key.size(), std::free, id);

    cairo_save(cr);
    cairo_translate(cr, x + box.x, baseline + box.y);
    cairo_scale(cr, 1 / kEmojiScale, 1 / kEmojiScale);
    cairo_set_source_surface(cr, image, 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
    cairo_surface_destroy(image);
}

int Typesetter::unknownGlyphs(std::string_view text, double size) {
    std::shared_ptr<PangoLayout> layout(pango_layout_new(context_), g_object_unref);
    pango_layout_set_font_description(layout.get(), font(size));
    std::string valid = validText(text);
    pango_layout_set_text(layout.get(), valid.data(), static_cast<int>(valid.size()));
    return pango_layout_get_unknown_glyphs_count(layout.get());
}

}  // namespace kinfolio
