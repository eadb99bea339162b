#include "layout/layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "model/parallel.h"

namespace kinfolio {

namespace {

// The typesetter of a thread at work in typesetInParallel; none elsewhere.
thread_local Typesetter* threadType = nullptr;

}  // namespace

Layout::Layout(ExportInput in)
    : input(std::move(in)),
      s(input.settings),
      size(pageSize(input.settings.paper)),
      type_(std::make_unique<Typesetter>()),
      redactor_(input.settings.hiddenText) {
    auto number = [&](const std::string& id) {
        if (id.empty() || sourceNumbers.count(id) || !input.files.count(id)) return;
        sourceOrder.push_back(id);
        sourceNumbers[id] = static_cast<int>(sourceOrder.size());
    };
    for (const auto& item : input.items) {
        number(item.fileID);
        if (item.details().attachmentID) number(*item.details().attachmentID);
    }
}

std::vector<Line> Layout::lines(std::string_view text, double pointSize, double width, Paint colour,
                                bool bold, bool italic) {
    Typesetter& type = threadType ? *threadType : *type_;
    return type.lines(text, pointSize, width, colour, bold, italic);
}

void Layout::typesetInParallel(size_t count, const std::function<void(size_t)>& make) {
    // Below this many a thread costs more than it saves.
    constexpr size_t kLeastPerThread = 32;
    const size_t parts = std::clamp<size_t>(count / kLeastPerThread, 1, Parallel::threads());
    while (helperTypes_.size() + 1 < parts)
        helperTypes_.push_back(std::make_unique<Typesetter>());
    Parallel::forEach(parts, [&](size_t k) {
        struct Own {
            explicit Own(Typesetter* type) { threadType = type; }
            ~Own() { threadType = nullptr; }
        } own(k == 0 ? type_.get() : helperTypes_[k - 1].get());
        for (size_t i = k * count / parts; i < (k + 1) * count / parts; ++i)
            make(i);
    });
}

void Layout::drawLine(cairo_t* cr, const Line& line, double x, double baseline) {
    type_->draw(cr, line, x, baseline);
}

std::vector<Piece> Layout::textBlock(std::string_view text, double pointSize, bool bold,
                                     Paint colour, double spaceAfter, double width) {
    std::vector<Piece> pieces;
    for (auto& line : lines(text, pointSize, width, colour, bold)) {
        Piece piece;
        piece.height = line.height;
        piece.draw = [this, line](cairo_t* cr, double top) {
            drawLine(cr, line, margin, top + line.ascent);
        };
        pieces.push_back(std::move(piece));
    }
    if (!pieces.empty()) pieces.back().height += spaceAfter;
    return pieces;
}

Pagination Layout::paginate(const std::map<std::string, int>& contentsPages) {
    if (!body_) {
        body_ = timeline();
        auto tail = appendix();
        body_->insert(body_->end(), tail.begin(), tail.end());
    }
    std::vector<Piece> pieces = cover(contentsPages);
    pieces.insert(pieces.end(), body_->begin(), body_->end());
    return kinfolio::paginate(pieces, size.height);
}

std::string Layout::destination(const std::string& marker) {
    std::string name = "kinfolio-";
    for (char c : marker)
        name += (std::isalnum(static_cast<unsigned char>(c)) || c == '-') ? c : '_';
    return name;
}

std::string fileSize(int64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    static const char* units[] = {"kB", "MB", "GB", "TB"};
    static const int decimals[] = {0, 1, 2, 2};
    double value = static_cast<double>(bytes) / 1000;
    for (int u = 0;; ++u) {
        double scale = std::pow(10.0, decimals[u]);
        double rounded = std::round(value * scale) / scale;
        if (rounded < 1000 || u == 3) {
            char text[64];
            std::snprintf(text, sizeof text, "%.*f", decimals[u], rounded);
            std::string number = text;
            // "2 MB" rather than "2.0 MB", as file browsers write it.
            if (number.find('.') != std::string::npos) {
                while (number.back() == '0')
                    number.pop_back();
                if (number.back() == '.') number.pop_back();
            }
            return number + " " + units[u];
        }
        value /= 1000;
    }
}

}  // namespace kinfolio
