#include <algorithm>
#include <array>
#include <cmath>

#include "layout/graphemes.h"
#include "layout/layout.h"
#include "model/calendar.h"

namespace kinfolio {

namespace {

constexpr size_t kEmailBodyLimit = 2500;

// Groups of the arrangement by type of evidence, in their order.
constexpr std::array<const char*, 7> kGroupTitles = {
    "Communication", "Photos and videos", "Travel",         "Finance",
    "Home",          "Certificates",      "Other documents"};

// A document's reader stores its category in the sender field.
int groupOf(const Evidence& item) {
    switch (item.kind) {
        case ItemKind::message:
        case ItemKind::call:
        case ItemKind::screenshot:
        case ItemKind::email:
            return 0;
        case ItemKind::photo:
        case ItemKind::video:
            return 1;
        case ItemKind::document:
            if (item.sender == "Travel") return 2;
            if (item.sender == "Finance") return 3;
            if (item.sender == "Home") return 4;
            if (item.sender == "Certificate") return 5;
            return 6;
    }
    return 6;
}

void addSpace(std::vector<Piece>& pieces, double space) {
    if (!pieces.empty()) pieces.back().height += space;
}

void append(std::vector<Piece>& to, std::vector<Piece> more) {
    to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

}  // namespace

std::vector<Layout::Section> Layout::sections() const {
    std::vector<Section> result;
    if (s.arrangement == Arrangement::byType) {
        std::array<std::vector<Evidence>, kGroupTitles.size()> groups;
        for (const auto& item : input.items)
            groups[groupOf(item)].push_back(item);
        for (size_t g = 0; g < groups.size(); ++g)
            if (!groups[g].empty())
                result.push_back({std::to_string(g + 1), kGroupTitles[g], groups[g]});
        return result;
    }
    std::map<std::string, size_t> index;
    for (const auto& item : input.items) {
        std::string key = Calendar::monthKey(item.date);
        auto [it, added] = index.emplace(key, 0);
        if (added) {
            it->second = result.size();
            result.push_back({key, Calendar::format(item.date, "MMMM yyyy"), {}});
        }
        result[it->second].items.push_back(item);
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const Section& a, const Section& b) { return a.key < b.key; });
    return result;
}

std::vector<Piece> Layout::timeline() {
    preparePictures(input.items);
    const std::vector<Section> all = sections();
    std::vector<std::pair<size_t, size_t>> places;  // (section, item)
    for (size_t k = 0; k < all.size(); ++k)
        for (size_t i = 0; i < all[k].items.size(); ++i)
            places.emplace_back(k, i);
    // Shaping text is most of the work; the entries do not depend on one
    // another, so every core takes a share.
    std::vector<std::vector<Piece>> entries(places.size());
    typesetInParallel(places.size(), [&](size_t j) {
        entries[j] = entry(all[places[j].first], places[j].second);
    });

    std::vector<Piece> pieces;
    size_t next = 0;
    for (const auto& section : all) {
        auto heading =
            textBlock(section.title, 16, true, Colours::ink, section.spacing, contentWidth());
        for (auto& piece : heading)
            piece.keepWithNext = true;
        // The first section follows the contents on their page when it fits;
        // its contents row then names that page.
        heading.front().marker = section.key;
        append(pieces, std::move(heading));
        for (size_t i = 0; i < section.items.size(); ++i)
            append(pieces, std::move(entries[next++]));
        pieces.push_back(Piece{10, false, false, std::nullopt, nullptr});
    }
    return pieces;
}

std::vector<Piece> Layout::entry(const Section& section, size_t index) {
    const Evidence& item = section.items[index];
    const Evidence* previous = index > 0 ? &section.items[index - 1] : nullptr;
    std::vector<Piece> pieces;
    if (s.arrangement == Arrangement::byType &&
        (!previous || Calendar::monthKey(previous->date) != Calendar::monthKey(item.date))) {
        auto sub = textBlock(Calendar::format(item.date, "MMMM yyyy"), 12, true, Colours::ink, 2,
                             contentWidth());
        for (auto& piece : sub)
            piece.keepWithNext = true;
        append(pieces, std::move(sub));
    }
    if (!previous || Calendar::startOfDay(previous->date) != Calendar::startOfDay(item.date))
        pieces.push_back(daySeparator(Calendar::format(item.date, "EEEE, MMMM d, yyyy")));
    append(pieces, render(item));
    return pieces;
}

Piece Layout::daySeparator(const std::string& text) {
    auto typeset = lines(text, 9.5, contentWidth(), Colours::muted, true);
    Piece piece;
    piece.height = 24;
    piece.keepWithNext = true;
    if (typeset.empty()) return piece;
    Line line = typeset.front();
    piece.draw = [this, line](cairo_t* cr, double top) {
        double x = margin + (contentWidth() - line.width) / 2;
        double baseline = top + (24 - line.height) / 2 + line.ascent;
        double middle = std::round(baseline - line.ascent / 2.8) + 0.25;
        setSource(cr, Colours::rule);
        cairo_set_line_width(cr, 0.5);
        if (x - margin > 14) {
            cairo_move_to(cr, margin, middle);
            cairo_line_to(cr, x - 8, middle);
            cairo_move_to(cr, x + line.width + 8, middle);
            cairo_line_to(cr, size.width - margin, middle);
            cairo_stroke(cr);
        }
        drawLine(cr, line, x, baseline);
    };
    return piece;
}

std::string Layout::sourceLabel(const Evidence& item) const {
    auto found = sourceNumbers.find(item.fileID);
    return "Source " + std::to_string(found == sourceNumbers.end() ? 0 : found->second);
}

Piece Layout::meta(const std::string& text, bool right) {
    auto typeset = lines(text, 8.5, contentWidth(), Colours::muted, false, true);
    Piece piece;
    piece.keepWithNext = true;  // never left alone at the foot of a page
    double height = 0;
    for (const auto& line : typeset)
        height += line.height;
    piece.height = height + 2;
    piece.draw = [this, typeset, right](cairo_t* cr, double top) {
        for (const auto& line : typeset) {
            double x = right ? size.width - margin - line.width : margin;
            drawLine(cr, line, x, top + line.ascent);
            top += line.height;
        }
    };
    return piece;
}

std::vector<Piece> Layout::bubble(const std::string& text, bool mine) {
    auto typeset = lines(text, 10.5, contentWidth() * 0.68, Colours::ink);
    double widest = 0;
    for (const auto& line : typeset)
        widest = std::max(widest, line.width);
    const double width = widest + 16;
    const double x = mine ? size.width - margin - width : margin;
    const Paint fill = mine ? Colours::outgoingFill : Colours::incomingFill;
    std::vector<Piece> pieces;
    for (size_t i = 0; i < typeset.size(); ++i) {
        bool isFirst = i == 0, isLast = i + 1 == typeset.size();
        double height = typeset[i].height + (isFirst ? 5 : 0) + (isLast ? 5 : 0);
        Piece piece;
        piece.height = height;
        piece.draw = [this, line = typeset[i], x, width, height, fill, isFirst, isLast](
                         cairo_t* cr, double top) {
            slice(cr, x, top, width, height, isFirst, isLast);
            setSource(cr, fill);
            cairo_fill(cr);
            drawLine(cr, line, x + 8, top + (isFirst ? 5 : 0) + line.ascent);
        };
        pieces.push_back(std::move(piece));
    }
    return pieces;
}

std::vector<Piece> Layout::card(const std::string& heading, const std::string& body) {
    const double width = contentWidth() * 0.86;
    auto headingLines = lines(heading, 9.5, width - 20, Colours::ink, true);
    auto bodyLines = lines(body, 9.5, width - 20, Colours::ink);
    std::vector<Piece> pieces;
    const size_t count = headingLines.size() + bodyLines.size();
    for (size_t i = 0; i < count; ++i) {
        bool isFirst = i == 0, isLast = i + 1 == count;
        bool lastOfHeading = i + 1 == headingLines.size();
        const Line& line =
            i < headingLines.size() ? headingLines[i] : bodyLines[i - headingLines.size()];
        double above = isFirst ? 8 : 0;
        double height = line.height + above + (isLast ? 8 : 0) + (lastOfHeading ? 4 : 0);
        Piece piece;
        piece.height = height;
        piece.draw = [this, line, width, height, above, isFirst, isLast](cairo_t* cr, double top) {
            slice(cr, margin, top, width, height, isFirst, isLast);
            cairo_set_source_rgb(cr, 0.96, 0.96, 0.96);
            cairo_fill(cr);
            drawLine(cr, line, margin + 10, top + above + line.ascent);
        };
        pieces.push_back(std::move(piece));
    }
    return pieces;
}

std::vector<Piece> Layout::render(const Evidence& item) {
    const bool mine = !s.ownerName.empty() && item.sender == s.ownerName;
    std::string when = Calendar::format(item.date, "h:mm a");
    std::string where = sourceLabel(item) + ", entry " + std::to_string(item.position);
    std::string estimated = item.dateIsEstimated ? " · date estimated from the file" : "";
    auto line = [&](const std::string& lead) {
        return (lead.empty() ? "" : lead + " · ") + when + " · " + where + estimated;
    };
    std::vector<Piece> pieces;
    double space = 10;
    switch (item.kind) {
        case ItemKind::message: {
            pieces.push_back(meta(line(redact(item.sender.str())), mine));
            std::string text = item.text;
            if (item.details().attachmentName) text += " (file attached)";
            append(pieces, bubble(redact(text), mine));
            auto picture = pictures(item);
            // A message and its picture stay on one page together.
            if (!picture.empty())
                for (auto& piece : pieces)
                    piece.keepWithNext = true;
            append(pieces, std::move(picture));
            space = 6;
            break;
        }
        case ItemKind::call: {
            pieces.push_back(meta(line(redact(item.sender.str())), mine));
            std::string text = item.text.empty() ? "Call" : item.text;
            if (auto duration = item.details().duration; duration && *duration > 0)
                text += " · " + Calendar::duration(*duration);
            append(pieces, bubble(redact(text), mine));
            space = 6;
            break;
        }
        case ItemKind::email: {
            pieces.push_back(meta(line("Email"), false));
            std::string body = redact(item.text);
            // Cut after hiding, so a hidden word can never be half shown at the cut.
            if (graphemeCount(body) > kEmailBodyLimit)
                body = prefixGraphemes(body, kEmailBodyLimit) +
                       "\n[\u2026 continues in the original email]";
            append(pieces, card(redact(item.details().heading), body));
            space = 8;
            break;
        }
        case ItemKind::document: {
            std::string title = redact(item.text);
            pieces.push_back(meta(line(title.empty() ? "Document" : "Document: " + title), false));
            if (const auto& path = item.details().imageURL) append(pieces, documentPiece(*path));
            space = 8;
            break;
        }
        case ItemKind::photo: {
            std::string lead = "Photo";
            if (!item.sender.empty()) lead += " from " + redact(item.sender.str());
            pieces.push_back(meta(line(lead), false));
            append(pieces, pictures(item));
            break;
        }
        case ItemKind::screenshot: {
            std::string lead = "Screenshot";
            size_t covered = hiddenBoxes(item).size();
            if (covered > 0)
                lead += " \u00B7 " + std::to_string(covered) + (covered == 1 ? " line" : " lines") +
                        " covered";
            pieces.push_back(meta(line(lead), false));
            append(pieces, pictures(item));
            break;
        }
        case ItemKind::video: {
            std::string lead = "Video";
            if (auto duration = item.details().duration)
                lead += ", " + Calendar::duration(*duration);
            pieces.push_back(meta(line(lead), false));
            append(pieces, pictures(item));
            break;
        }
    }
    // A meta line that ends up last no longer has anything to stay with.
    if (pieces.size() == 1) pieces.back().keepWithNext = false;
    addSpace(pieces, space);
    return pieces;
}

}  // namespace kinfolio
