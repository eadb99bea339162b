#include "layout/redaction.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "layout/graphemes.h"
#include "layout/layout.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

// Matching compares NFKC case-folded text: "É" typed in one piece matches "E"
// followed by a combining accent (as file names copied from some systems
// are), full-width "ＡＮＮＡ" matches "anna" and "ß" matches "ss". A word
// that looks the same to the user is hidden whatever form its bytes take.
const icu::Normalizer2& folding() {
    static const icu::Normalizer2* normalizer = [] {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Normalizer2* n = icu::Normalizer2::getNFKCCasefoldInstance(status);
        if (U_FAILURE(status) || !n) {
            // ICU's data is linked in; without it no text could be read at all.
            std::fprintf(stderr, "kinfolio: ICU has no NFKC case folding data: %s\n",
                         u_errorName(status));
            std::abort();
        }
        return n;
    }();
    return *normalizer;
}

// A run of white space (spaces, tabs, line breaks, no-break spaces) counts
// as one space, in the rules and in the texts: an e-mail wrapped as
// "Harriet\nDunmore" or a cell holding "Anna  Smith" still holds the phrase.
icu::UnicodeString collapsedSpaces(const icu::UnicodeString& text) {
    bool needed = false;
    for (int32_t i = 0; i < text.length() && !needed; ++i) {
        char16_t c = text.charAt(i);
        needed = (c != u' ' && u_isUWhiteSpace(c)) ||
                 (c == u' ' && i + 1 < text.length() && u_isUWhiteSpace(text.charAt(i + 1)));
    }
    if (!needed) return text;
    icu::UnicodeString out;
    bool inRun = false;
    for (int32_t i = 0; i < text.length();) {
        UChar32 c = text.char32At(i);
        i = text.moveIndex32(i, 1);
        if (u_isUWhiteSpace(c)) {
            if (!inRun) out += u' ';
            inRun = true;
        } else {
            out.append(c);
            inRun = false;
        }
    }
    return out;
}

icu::UnicodeString foldedCopy(const icu::UnicodeString& text) {
    const icu::Normalizer2& n = folding();
    UErrorCode status = U_ZERO_ERROR;
    // Most texts hold no rule; the quick check spares them a copy when they
    // are already folded (lower-case text without compatibility forms).
    if (n.isNormalized(text, status) && U_SUCCESS(status)) return collapsedSpaces(text);
    status = U_ZERO_ERROR;
    icu::UnicodeString folded = n.normalize(text, status);
    return collapsedSpaces(U_SUCCESS(status) ? folded : text);
}

icu::UnicodeString foldedCopy(std::string_view text) {
    return foldedCopy(toUnicode(text));
}

// The folded copy of a text with, for every UTF-16 unit of the copy, the
// range of the original it came from. Folding changes lengths ("ß" folds to
// "ss", "e" + U+0301 to "é"), so a match in the copy is mapped back through
// these. The text is cut before every character that has a normalisation
// boundary before it and each piece is folded on its own: that gives the same
// copy as folding the whole text, and ties each unit to its piece.
struct Folded {
    icu::UnicodeString text;
    std::vector<int32_t> from;
    std::vector<int32_t> to;
};

Folded fold(const icu::UnicodeString& original) {
    const icu::Normalizer2& n = folding();
    Folded f;
    icu::UnicodeString piece;
    for (int32_t i = 0; i < original.length();) {
        int32_t next = original.moveIndex32(i, 1);
        if (u_isUWhiteSpace(original.char32At(i))) {
            while (next < original.length() && u_isUWhiteSpace(original.char32At(next)))
                next = original.moveIndex32(next, 1);
            f.text += u' ';
            f.from.push_back(i);
            f.to.push_back(next);
            i = next;
            continue;
        }
        while (next < original.length() && !n.hasBoundaryBefore(original.char32At(next)))
            next = original.moveIndex32(next, 1);
        UErrorCode status = U_ZERO_ERROR;
        n.normalize(original.tempSubString(i, next - i), piece, status);
        if (U_FAILURE(status)) piece = original.tempSubString(i, next - i);
        f.text += piece;
        f.from.insert(f.from.end(), piece.length(), i);
        f.to.insert(f.to.end(), piece.length(), next);
        i = next;
    }
    return f;
}

icu::UnicodeString replaceFolded(const icu::UnicodeString& text, const icu::UnicodeString& rule) {
    static const icu::UnicodeString replacement = toUnicode(kRedacted);
    Folded f = fold(text);
    icu::UnicodeString out;
    int32_t copied = 0;
    bool changed = false;
    for (int32_t k = f.text.indexOf(rule); k >= 0; k = f.text.indexOf(rule, k + rule.length())) {
        // A match that begins or ends inside a piece that folding changed
        // hides the whole piece: over-hiding is safe, showing half of it is not.
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
    // A word that folds to nothing (only invisible characters) hides nothing,
    // as in the redactor.
    icu::UnicodeString folded = foldedCopy(word);
    return !folded.isEmpty() && foldedCopy(text).indexOf(folded) >= 0;
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
    icu::UnicodeString folded = foldedCopy(u);
    for (const auto& rule : folded_) {
        // Only a text that holds the rule pays for the mapped copy.
        if (folded.indexOf(rule) < 0) continue;
        u = replaceFolded(u, rule);
        folded = foldedCopy(u);
    }
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
