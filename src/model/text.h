#pragma once

#include <unicode/regex.h>
#include <unicode/unistr.h>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kinfolio {

// Text is UTF-8 in std::string everywhere; ICU works on UTF-16, so these
// convert at the edges.
icu::UnicodeString toUnicode(std::string_view utf8);
std::string toUtf8(const icu::UnicodeString& text);

bool isValidUtf8(std::string_view bytes);

// Eight bytes of a text as one word, and tests on all eight at once, for
// skipping the long plain runs of large texts. Each answers for the word as a
// whole, exactly.
inline uint64_t eightBytes(const char* at) {
    uint64_t word;
    std::memcpy(&word, at, 8);
    return word;
}
inline bool anyNonAscii(uint64_t word) {
    return (word & 0x8080808080808080ULL) != 0;
}
// Whether a byte is below `n`, which is at most 0x80.
inline bool anyByteBelow(uint64_t word, uint8_t n) {
    return ((word - 0x0101010101010101ULL * n) & ~word & 0x8080808080808080ULL) != 0;
}
inline bool anyByteIs(uint64_t word, char c) {
    return anyByteBelow(word ^ (0x0101010101010101ULL * static_cast<uint8_t>(c)), 1);
}
// The plain ASCII run that starts at `from`: where it ends, at the first byte
// that is a control character below 0x0E (a line feed, a tab) or not ASCII,
// or at the text's size; and whether it holds `markA` or `markB`. One look
// finds a line's end, whether the line needs a closer one, and whether it
// may hold what the marks begin.
struct PlainRun {
    size_t end = 0;
    bool marked = false;
};
inline PlainRun plainAsciiRun(std::string_view s, size_t from, char markA, char markB) {
    size_t i = from;
    bool marked = false;
#if defined(__SSE2__)
    // Compared as signed bytes, those from 0x80 up are below 0x0E too.
    const __m128i limit = _mm_set1_epi8(0x0E), a = _mm_set1_epi8(markA), b = _mm_set1_epi8(markB);
    for (; i + 16 <= s.size(); i += 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.data() + i));
        auto stop = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmplt_epi8(v, limit)));
        auto marks = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, a), _mm_cmpeq_epi8(v, b))));
        if (stop) {
            // Only marks before the end count.
            unsigned before = (stop & (0u - stop)) - 1;
            marked = marked || (marks & before) != 0;
            return {i + static_cast<size_t>(__builtin_ctz(stop)), marked};
        }
        marked = marked || marks != 0;
    }
#endif
    for (; i < s.size(); ++i) {
        auto c = static_cast<unsigned char>(s[i]);
        if (c < 0x0E || c >= 0x80) break;
        marked = marked || s[i] == markA || s[i] == markB;
    }
    return {i, marked};
}
inline size_t plainAsciiEnd(std::string_view s, size_t from) {
    return plainAsciiRun(s, from, '\x7F', '\x7F').end;
}

// What a reader of lines needs to know of a text before it cuts it up, in
// one look: its line feeds counted, and whether it holds a carriage return
// or ill-formed UTF-8, of which it must be mended first. The look stops at
// the first ill-formed byte.
struct LineLook {
    size_t lineFeeds = 0;
    bool carriageReturn = false;
    bool wellFormed = true;
};
LineLook lookOverLines(std::string_view text);

// Ill-formed sequences become U+FFFD.
std::string repairUtf8(std::string_view bytes);
// UTF-16 with a byte-order mark, or without one when the bytes read as
// plausible text in one byte order; none otherwise.
std::optional<std::string> decodeUtf16(std::string_view bytes);
// Windows-1252, the code page older Western office programs save text in:
// every byte is one character; the five bytes it leaves undefined become
// U+FFFD.
std::string decodeWindows1252(std::string_view bytes);

// Drops every occurrence of `what`.
std::string removeAll(std::string_view text, std::string_view what);
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);
bool startsWith(std::string_view text, std::string_view prefix);
bool endsWith(std::string_view text, std::string_view suffix);
std::string asciiLower(std::string_view text);
// Unicode full case folding, for comparing words of any script regardless of
// case ("Expéditeur" and "EXPÉDITEUR" both give "expéditeur").
std::string caseFolded(std::string_view text);
// Trims spaces, tabs and line breaks (any Unicode white space) at both ends.
std::string trimWhitespace(std::string_view text);
// Trims only spaces and tabs.
std::string trimSpacesAndTabs(std::string_view text);
// The parts with `separator` between them; joinNonEmpty leaves out empty
// parts, as for optional names.
std::string join(const std::vector<std::string>& parts, std::string_view separator);
std::string joinNonEmpty(const std::vector<std::string>& parts, std::string_view separator);
// The lines of a text, split at LF, CR LF or a lone CR; views into the text.
// A final line break ends the last line rather than starting an empty one.
std::vector<std::string_view> textLines(std::string_view text);
// The first n user-visible code points (not bytes) of the text.
std::string prefixCodePoints(std::string_view text, size_t n);

// The value of a short run of decimal digits of any script, as ICU's \d
// matches them ("2025", full-width or Arabic-Indic digits); -1 when the text
// holds anything else or is empty.
long long decimalValue(std::string_view digits);

// A compiled ICU regular expression, made once (keep it in a function-local
// static); a pattern that does not compile is a programming error and aborts.
class Regex {
public:
    explicit Regex(const char* pattern, uint32_t flags = 0);
    // A matcher over `text`, which must outlive it.
    std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const;
    // Whether the expression matches the whole text.
    bool matchesWhole(const icu::UnicodeString& text) const;
    // Whether the expression is found anywhere in the text.
    bool find(const icu::UnicodeString& text) const;

private:
    std::unique_ptr<icu::RegexPattern> pattern_;
};

// The text of capture group `group` of the matcher's current match, or none
// when the group did not take part.
std::optional<std::string> groupText(icu::RegexMatcher& m, int group);

}  // namespace kinfolio
