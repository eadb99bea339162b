#include "layout/graphemes.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>

#include <memory>

#include "model/text.h"

namespace kinfolio {

namespace {

// Character break iterators are costly to open; one per thread is reused.
icu::BreakIterator& characterBreaks() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> it(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) std::abort();
        return it;
    }();
    return *iterator;
}

}  // namespace

size_t graphemeCount(std::string_view utf8) {
    icu::UnicodeString text = toUnicode(utf8);
    icu::BreakIterator& it = characterBreaks();
    it.setText(text);
    size_t count = 0;
    for (int32_t p = it.next(); p != icu::BreakIterator::DONE; p = it.next())
        ++count;
    return count;
}

std::string prefixGraphemes(std::string_view utf8, size_t n) {
    icu::UnicodeString text = toUnicode(utf8);
    icu::BreakIterator& it = characterBreaks();
    it.setText(text);
    int32_t end = 0;
    for (size_t i = 0; i < n; ++i) {
        int32_t p = it.next();
        if (p == icu::BreakIterator::DONE) break;
        end = p;
    }
    return toUtf8(text.tempSubString(0, end));
}

}  // namespace kinfolio
