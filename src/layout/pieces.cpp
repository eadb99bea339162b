#include "layout/pieces.h"

#include <algorithm>
#include <cmath>

namespace kinfolio {

Pagination paginate(const std::vector<Piece>& pieces, double pageHeight) {
    const double bottom = pageHeight - kBottomGap;
    const double usable = bottom - kFirstTop;
    Pagination result;
    result.pages.emplace_back();
    double y = kFirstTop;
    auto newPage = [&] {
        result.pages.emplace_back();
        y = kFirstTop;
    };
    for (size_t i = 0; i < pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        if (piece.breakBefore && !result.pages.back().empty()) newPage();
        double group = piece.height;
        if (piece.keepWithNext) {
            for (size_t j = i + 1; j < pieces.size(); ++j) {
                group += pieces[j].height;
                if (!pieces[j].keepWithNext) break;
            }
        }
        if (y + std::min(group, usable) > bottom && !result.pages.back().empty()) newPage();
        if (piece.marker) result.markers[*piece.marker] = static_cast<int>(result.pages.size());
        result.pages.back().push_back(Placed{piece, y});
        y += piece.height;
    }
    return result;
}

void slice(cairo_t* cr, double x, double top, double width, double height, bool roundTop,
           bool roundBottom) {
    const double r = 9;
    const double minX = x, maxX = x + width, upper = top, lower = top + height;
    cairo_new_path(cr);
    cairo_move_to(cr, minX, lower - (roundBottom ? r : 0));
    cairo_line_to(cr, minX, upper + (roundTop ? r : 0));
    if (roundTop) {
        cairo_arc(cr, minX + r, upper + r, r, M_PI, 1.5 * M_PI);
        cairo_line_to(cr, maxX - r, upper);
        cairo_arc(cr, maxX - r, upper + r, r, 1.5 * M_PI, 2 * M_PI);
    } else {
        cairo_line_to(cr, maxX, upper);
    }
    cairo_line_to(cr, maxX, lower - (roundBottom ? r : 0));
    if (roundBottom) {
        cairo_arc(cr, maxX - r, lower - r, r, 0, 0.5 * M_PI);
        cairo_line_to(cr, minX + r, lower);
        cairo_arc(cr, minX + r, lower - r, r, 0.5 * M_PI, M_PI);
    } else {
        cairo_line_to(cr, minX, lower);
    }
    cairo_close_path(cr);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
}

}  // namespace kinfolio
