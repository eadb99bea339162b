#pragma once

#include <pango/pangocairo.h>

#include <map>
#include <memory>
#include <string_view>
#include <tuple>
#include <vector>

#include "layout/pieces.h"

namespace kinfolio {

// One typeset line. It keeps its paragraph's layout alive, since Pango's
// lines point into it.
struct Line {
    std::shared_ptr<PangoLayout> layout;
    PangoLayoutLine* line = nullptr;
    double width = 0;   // typographic width
    double ascent = 0;  // baseline below the line's top
    double height = 0;  // the line's advance
    Paint colour;
};

// Shapes, breaks, measures and draws text with Pango. One sans-serif family
// is asked for everywhere (Noto Sans, else DejaVu Sans) so a file comes out
// the same on every machine; fontconfig's fallback supplies the glyphs of
// other scripts and emoji. Each instance has its own font map, so instances
// may work on separate threads; one instance serves one thread at a time.
class Typesetter {
public:
    Typesetter();
    ~Typesetter();
    Typesetter(const Typesetter&) = delete;
    Typesetter& operator=(const Typesetter&) = delete;

    const PangoFontDescription* font(double size, bool bold = false, bool italic = false);

    // The text broken into lines no wider than `width`, paragraph by
    // paragraph ("\n"); an empty paragraph keeps the height of a space. Each
    // line's height is ceil(ascent + descent + max(leading, size × 0.25)).
    std::vector<Line> lines(std::string_view text, double size, double width, Paint colour,
                            bool bold = false, bool italic = false);

    // Draws the line with its baseline at (x, baseline).
    void draw(cairo_t* cr, const Line& line, double x, double baseline);

    // Glyphs of the text that no installed font has (drawn as boxes).
    int unknownGlyphs(std::string_view text, double size);

private:
    struct Font {
        PangoFontDescription* description = nullptr;
        double leading = 0;
    };
    Font& fontEntry(double size, bool bold, bool italic);
    bool isColourFont(PangoFont* font);
    void drawColourRun(cairo_t* cr, const char* text, PangoGlyphItem* run, double x,
                       double baseline);

    PangoFontMap* fontMap_ = nullptr;
    PangoContext* context_ = nullptr;
    // Attributes of every paragraph: no hyphens added where a word breaks.
    std::shared_ptr<PangoAttrList> noHyphens_;
    std::map<std::tuple<double, bool, bool>, Font> fonts_;
    std::map<PangoFont*, bool> colourFonts_;
};

}  // namespace kinfolio
