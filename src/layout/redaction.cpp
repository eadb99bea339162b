#include "layout/redaction.h"

#include <algorithm>

#include "layout/graphemes.h"
#include "layout/layout.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

// The case-folded copy of a text with, for every UTF-16 unit of the copy, the
// range of the original code point it came from. Folding can change lengths
// ("ß" folds to "ss"), so a match in the copy is mapped back through these.
struct Folded {
    icu::UnicodeString text;
    std::vector<int32_t> from;
    std::vector<int32_t> to;
};

Folded fold(const icu::UnicodeString& original) {
    Folded f;
    for (int32_t i = 0; i < original.length();) {
        UChar32 c = original.char32At(i);
        int32_t next = original.moveIndex32(i, 1);
        icu::UnicodeString piece(c);
        piece.foldCase();
        f.text += piece;
        for (int32_t k = 0; k < piece.length(); ++k) {
            f.from.push_back(i);
            f.to.push_back(next);
        }
        i = next;
    }
    return f;
}

icu::UnicodeString foldedCopy(std::string_view text) {
    icu::UnicodeString u = toUnicode(text);
    u.foldCase();
    return u;
}

icu::UnicodeString replaceFolded(const icu::UnicodeString& text, const icu::UnicodeString& rule) {
    static const icu::UnicodeString replacement = toUnicode(kRedacted);
    Folded f = fold(text);
    icu::UnicodeString out;
    int32_t copied = 0;
    bool changed = false;
    for (int32_t k = f.text.indexOf(rule); k >= 0; k = f.text.indexOf(rule, k + rule.length())) {
        // A match that begins or ends inside an expanded character hides the
        // whole character: over-hiding is safe, showing half of it is not.
        int32_t start = std::max(f.from[k], copied);
        int32_t end = f.to[k + rule.length() - 1];
        if (end <= copied) continue;
        out.append(text, copied, start - copied);
        out += replacement;
        copied = end;
        changed = true;
    }
    if (!changed) return text;
    out.append(text, copied, text.length() - copied);
    return out;
}

}  // namespace

std::vector<std::string> redactionRules(std::string_view hiddenText) {
    static const Regex lineBreak("\\r\\n|[\\n\\r\\u000B\\u000C\\u0085\\u2028\\u2029]");
    icu::UnicodeString text = toUnicode(hiddenText);
    std::vector<std::string> rules;
    auto add = [&](int32_t from, int32_t to) {
        std::string rule = trimSpacesAndTabs(toUtf8(text.tempSubString(from, to - from)));
        if (!rule.empty()) rules.push_back(std::move(rule));
    };
    auto m = lineBreak.matcher(text);
    int32_t start = 0;
    UErrorCode status = U_ZERO_ERROR;
    while (m->find()) {
        add(start, m->start(status));
        start = m->end(status);
    }
    add(start, text.length());
    return rules;
}

bool containsIgnoringCase(std::string_view text, std::string_view word) {
    return foldedCopy(text).indexOf(foldedCopy(word)) >= 0;
}

Redactor::Redactor(std::string_view hiddenText) {
    std::vector<std::string> rules = redactionRules(hiddenText);
    std::vector<std::pair<size_t, std::string>> sized;
    for (auto& rule : rules)
        sized.emplace_back(graphemeCount(rule), std::move(rule));
    // Longest first, so a phrase goes whole before a word inside it breaks it up.
    std::stable_sort(sized.begin(), sized.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [count, rule] : sized) {
        icu::UnicodeString folded = foldedCopy(rule);
        if (!folded.isEmpty()) folded_.push_back(folded);
    }
}

std::string Redactor::operator()(std::string_view text) const {
    if (folded_.empty()) return std::string(text);
    icu::UnicodeString u = toUnicode(text);
    for (const auto& rule : folded_)
        u = replaceFolded(u, rule);
    return toUtf8(u);
}

std::string redact(std::string_view text, std::string_view hiddenText) {
    return Redactor(hiddenText)(text);
}

}  // namespace kinfolio::Importer

namespace kinfolio {

std::vector<TextBox> Layout::hiddenBoxes(const Evidence& item) const {
    std::vector<std::string> rules = Importer::redactionRules(s.hiddenText);
    std::vector<TextBox> boxes;
    if (rules.empty()) return boxes;
    for (const auto& box : item.details().textBoxes) {
        bool hit = std::any_of(rules.begin(), rules.end(), [&](const std::string& rule) {
            return Importer::containsIgnoringCase(box.text, rule);
        });
        if (hit) boxes.push_back(box);
    }
    return boxes;
}

}  // namespace kinfolio
