#include <algorithm>
#include <array>

#include "layout/layout.h"
#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio {

namespace {

std::string counted(size_t n, const std::string& word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

}  // namespace

std::vector<Piece> Layout::cover(const std::map<std::string, int>& contentsPages) {
    const double width = contentWidth();
    std::vector<Piece> pieces;
    auto add = [&](std::vector<Piece> more) {
        pieces.insert(pieces.end(), more.begin(), more.end());
    };
    add(textBlock(redact(s.title.empty() ? "Relationship evidence" : s.title), 24, true,
                  Colours::ink, 18, width));

    std::vector<std::string> info;
    if (!s.applicant.empty()) info.push_back("Applicant: " + redact(s.applicant));
    if (!s.partner.empty()) info.push_back("Partner / sponsor: " + redact(s.partner));
    if (!s.reference.empty()) info.push_back("Reference: " + redact(s.reference));
    if (!input.items.empty()) {
        auto [first, last] = std::minmax_element(
            input.items.begin(), input.items.end(),
            [](const Evidence& a, const Evidence& b) { return a.date < b.date; });
        std::string from = Calendar::format(first->date, "MMMM yyyy");
        std::string to = Calendar::format(last->date, "MMMM yyyy");
        info.push_back("Period: " + from + (from == to ? "" : " \u2013 " + to));
    }
    std::array<size_t, kItemKindCount> kinds{};
    size_t messages = 0;
    for (const auto& item : input.items) {
        ++kinds[static_cast<size_t>(item.kind)];
        if (item.kind == ItemKind::message && !item.text.empty()) ++messages;
    }
    info.push_back(
        counted(messages, "message") + " from " +
        counted(static_cast<size_t>(std::max(0, input.conversationCount)), "conversation"));
    std::vector<std::string> includes;
    const std::array<std::pair<ItemKind, const char*>, 6> words = {{
        {ItemKind::call, "call"},
        {ItemKind::photo, "photo"},
        {ItemKind::screenshot, "screenshot"},
        {ItemKind::video, "video"},
        {ItemKind::document, "document"},
        {ItemKind::email, "email"},
    }};
    for (const auto& [kind, word] : words)
        if (size_t n = kinds[static_cast<size_t>(kind)]; n > 0)
            includes.push_back(counted(n, word));
    if (!includes.empty()) info.push_back("Includes: " + join(includes, ", "));
    for (size_t i = 0; i < info.size(); ++i)
        add(textBlock(info[i], 11, false, Colours::ink, i + 1 == info.size() ? 8 : 6, width));

    add(
        textBlock("Prepared by the applicant from their own files. This is a selection, not a "
                  "complete history, and it does not show that any authority will accept it. "
                  "Check the current official guidance for your application.",
                  9, false, Colours::muted, 0, width));

    // Contents.
    auto heading = textBlock("Contents", 14, true, Colours::ink, 8, width);
    for (auto& piece : heading) {
        piece.keepWithNext = true;
    }
    if (!heading.empty()) {
        Piece& first = heading.front();
        first.height += 28;
        first.draw = [draw = first.draw](cairo_t* cr, double top) { draw(cr, top + 28); };
    }
    add(std::move(heading));

    std::vector<std::pair<std::string, std::string>> rows;  // title, marker
    for (const auto& section : sections())
        rows.emplace_back(section.title, section.key);
    rows.emplace_back("How this file was prepared", "appendix");
    for (const auto& [title, marker] : rows) {
        auto titleLines = lines(title, 10.5, width - 60, Colours::ink);
        auto found = contentsPages.find(marker);
        std::vector<Line> numberLines;
        if (found != contentsPages.end())
            numberLines = lines(std::to_string(found->second), 9.5, 60, Colours::muted);
        Piece row;
        row.height = titleLines.front().height + 4;
        int page = found != contentsPages.end() ? found->second : 0;
        row.draw = [this, line = titleLines.front(), numberLines, dest = destination(marker),
                    height = row.height, page](cairo_t* cr, double top) {
            // A file of a split export links only to its own pages.
            bool linked = page >= drawnPages_.first && page <= drawnPages_.second;
            std::string link = "dest='" + dest + "' rect=[" + std::to_string(margin) + " " +
                               std::to_string(top) + " " + std::to_string(contentWidth()) + " " +
                               std::to_string(height) + "]";
            if (linked) cairo_tag_begin(cr, CAIRO_TAG_LINK, link.c_str());
            drawLine(cr, line, margin, top + line.ascent);
            if (!numberLines.empty()) {
                const Line& number = numberLines.front();
                drawLine(cr, number, size.width - margin - number.width, top + line.ascent);
            }
            if (linked) cairo_tag_end(cr, CAIRO_TAG_LINK);
        };
        pieces.push_back(std::move(row));
    }
    // The timeline may follow on this page: the same gap as above the contents.
    pieces.back().height += 28;
    return pieces;
}

}  // namespace kinfolio
