#pragma once

#include <cairo.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The page model: blocks of known height that pagination pours onto pages.
// Positions are PDF points measured downward from the page top, which is
// also cairo's own orientation, so a piece draws at `top` directly.
namespace kinfolio {

struct Paint {
    double r = 0, g = 0, b = 0;
};

namespace Colours {
inline constexpr Paint ink{0.08, 0.08, 0.08};
inline constexpr Paint muted{0.4, 0.4, 0.4};
inline constexpr Paint rule{0.8, 0.8, 0.8};
inline constexpr Paint incomingFill{0.92, 0.92, 0.92};
inline constexpr Paint outgoingFill{0.86, 0.92, 1.0};
inline constexpr Paint page{1, 1, 1};
}  // namespace Colours

inline void setSource(cairo_t* cr, Paint p) {
    cairo_set_source_rgb(cr, p.r, p.g, p.b);
}

struct Piece {
    double height = 0;
    bool keepWithNext = false;
    // Starts a new page unless the current one is still empty.
    bool breakBefore = false;
    // The page that receives the piece is recorded under this key.
    std::optional<std::string> marker;
    // Draws the piece with its upper edge at `top`; none for pure space.
    std::function<void(cairo_t*, double top)> draw;
};

struct Placed {
    Piece piece;
    double top = 0;
};

using Page = std::vector<Placed>;

struct Pagination {
    std::vector<Page> pages;
    std::map<std::string, int> markers;  // marker -> 1-based page number
};

// Geometry shared by every page.
inline constexpr double kMargin = 50;
inline constexpr double kFirstTop = 76;
inline constexpr double kBottomGap = 72;

// Pours the pieces onto pages of the given height, honouring breakBefore
// and keep-with-next groups (capped at the usable height, so a group taller
// than a page starts on a fresh page and runs over instead of looping).
Pagination paginate(const std::vector<Piece>& pieces, double pageHeight);

// The outline of one slice of a chat bubble, radius 9: only the first slice
// has rounded top corners and only the last rounded bottom corners, so a
// bubble cut by a page break shows square edges at the cut. The rectangle is
// in cairo's top-down coordinates.
void slice(cairo_t* cr, double x, double top, double width, double height, bool roundTop,
           bool roundBottom);

}  // namespace kinfolio
