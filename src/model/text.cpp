#include "model/text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "model/parallel.h"

namespace kinfolio {

icu::UnicodeString toUnicode(std::string_view utf8) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())));
}

std::string toUtf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

namespace {

// The code point that begins at byte `i` and its length in bytes (at least
// 1); negative when the bytes there are ill-formed. ICU's offsets are 32-bit,
// so it only ever sees a window of four bytes: a mailbox may hold gigabytes.
UChar32 codePointAt(std::string_view text, size_t i, int32_t& length) {
    std::string_view window = text.substr(i, 4);
    const auto* s = reinterpret_cast<const uint8_t*>(window.data());
    int32_t k = 0;
    UChar32 c;
    U8_NEXT(s, k, static_cast<int32_t>(window.size()), c);
    length = k;
    return c;
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
    // A chat of a hundred megabytes is checked in pieces on every core. A
    // piece starts at a byte that is not a continuation byte: a well-formed
    // character never spans such a cut, and an ill-formed one is ill-formed
    // in its piece too.
    constexpr size_t kSmallestPiece = 4 << 20;
    if (bytes.size() < 2 * kSmallestPiece) return lookOverLines(bytes).wellFormed;
    size_t pieces = std::min<size_t>(Parallel::threads(), bytes.size() / kSmallestPiece);
    if (pieces < 2) return lookOverLines(bytes).wellFormed;
    std::vector<size_t> cuts{0};
    for (size_t k = 1; k < pieces; ++k) {
        size_t at = std::max(k * bytes.size() / pieces, cuts.back());
        while (at < bytes.size() && (static_cast<uint8_t>(bytes[at]) & 0xC0) == 0x80)
            ++at;
        cuts.push_back(at);
    }
    cuts.push_back(bytes.size());
    std::vector<char> valid(pieces);
    Parallel::forEach(pieces, [&](size_t k) {
        valid[k] = lookOverLines(bytes.substr(cuts[k], cuts[k + 1] - cuts[k])).wellFormed;
    });
    return std::all_of(valid.begin(), valid.end(), [](char v) { return v != 0; });
}

LineLook lookOverLines(std::string_view text) {
    LineLook look;
    const auto* s = reinterpret_cast<const uint8_t*>(text.data());
    size_t n = text.size(), i = 0;
    while (i < n) {
#if defined(__SSE2__)
        // Sixteen ASCII bytes at a time. Line feeds are counted in sixteen
        // byte-wide counters, summed before any can pass 255.
        const __m128i lineFeed = _mm_set1_epi8('\n'), carriageReturn = _mm_set1_epi8('\r'),
                      zero = _mm_setzero_si128();
        __m128i counters = zero, returns = zero;
        auto sum = [&] {
            __m128i pairs = _mm_sad_epu8(counters, zero);
            look.lineFeeds += static_cast<size_t>(_mm_cvtsi128_si32(pairs)) +
                              static_cast<size_t>(_mm_extract_epi16(pairs, 4));
            counters = zero;
        };
        for (int counted = 0; i + 16 <= n; i += 16) {
            __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
            if (_mm_movemask_epi8(v)) break;
            counters = _mm_sub_epi8(counters, _mm_cmpeq_epi8(v, lineFeed));
            returns = _mm_or_si128(returns, _mm_cmpeq_epi8(v, carriageReturn));
            if (++counted == 255) {
                sum();
                counted = 0;
            }
        }
        sum();
        look.carriageReturn = look.carriageReturn || _mm_movemask_epi8(returns) != 0;
        if (i >= n) break;
#endif
        if (s[i] < 0x80) {
            look.lineFeeds += s[i] == '\n';
            look.carriageReturn = look.carriageReturn || s[i] == '\r';
            ++i;
            continue;
        }
        int32_t length = 0;
        if (codePointAt(text, i, length) < 0) {
            look.wellFormed = false;
            return look;
        }
        i += static_cast<size_t>(length);
    }
    return look;
}

std::string repairUtf8(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        int32_t length = 0;
        if (codePointAt(bytes, i, length) < 0)
            out += "\xEF\xBF\xBD";
        else
            out.append(bytes.substr(i, static_cast<size_t>(length)));
        i += static_cast<size_t>(length);
    }
    return out;
}

namespace {

std::optional<std::string> utf16(std::string_view bytes, bool bigEndian, bool requirePlausible) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    icu::UnicodeString text;
    for (size_t i = 0; i < bytes.size(); i += 2) {
        auto a = static_cast<uint8_t>(bytes[i]), b = static_cast<uint8_t>(bytes[i + 1]);
        text.append(static_cast<char16_t>(bigEndian ? (a << 8 | b) : (b << 8 | a)));
    }
    for (int32_t i = 0; i < text.length();) {
        UChar32 c = text.char32At(i);
        if (U_IS_SURROGATE(c)) return std::nullopt;  // unpaired
        if (requirePlausible) {
            bool control = (c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f') ||
                           (c >= 0x7F && c < 0xA0);
            if (control || U_IS_UNICODE_NONCHAR(c) || !u_isdefined(c)) return std::nullopt;
        }
        i += U16_LENGTH(c);
    }
    return toUtf8(text);
}

}  // namespace

std::optional<std::string> decodeUtf16(std::string_view bytes) {
    if (bytes.size() >= 2) {
        auto a = static_cast<uint8_t>(bytes[0]), b = static_cast<uint8_t>(bytes[1]);
        if (a == 0xFF && b == 0xFE) return utf16(bytes.substr(2), false, false);
        if (a == 0xFE && b == 0xFF) return utf16(bytes.substr(2), true, false);
    }
    if (bytes.empty()) return std::nullopt;
    if (auto le = utf16(bytes, false, true)) return le;
    return utf16(bytes, true, true);
}

std::string decodeWindows1252(std::string_view bytes) {
    // 0x80 to 0x9F, where ISO 8859-1 has control codes, hold Windows' typographic
    // characters; 0 marks the five bytes left undefined.
    static constexpr char16_t kHigh[32] = {
        0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    icu::UnicodeString text;
    for (char byte : bytes) {
        auto b = static_cast<uint8_t>(byte);
        char16_t c = b;
        if (b >= 0x80 && b < 0xA0) c = kHigh[b - 0x80] ? kHigh[b - 0x80] : u'\uFFFD';
        text.append(c);
    }
    return toUtf8(text);
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (true) {
        size_t hit = text.find(from, pos);
        if (hit == std::string_view::npos) break;
        out.append(text.substr(pos, hit - pos));
        out.append(to);
        pos = hit + from.size();
    }
    out.append(text.substr(pos));
    return out;
}

std::string removeAll(std::string_view text, std::string_view what) {
    return replaceAll(text, what, "");
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) text += separator;
        text += parts[i];
    }
    return text;
}

std::string joinNonEmpty(const std::vector<std::string>& parts, std::string_view separator) {
    std::vector<std::string> present;
    for (const auto& part : parts)
        if (!part.empty()) present.push_back(part);
    return join(present, separator);
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::string asciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::string caseFolded(std::string_view text) {
    bool ascii = std::all_of(text.begin(), text.end(),
                             [](char c) { return static_cast<uint8_t>(c) < 0x80; });
    if (ascii) return asciiLower(text);
    icu::UnicodeString u = toUnicode(text);
    return toUtf8(u.foldCase(U_FOLD_CASE_DEFAULT));
}

// Only the ends are decoded, so trimming a long text costs one copy.
std::string trimWhitespace(std::string_view text) {
    size_t start = 0, end = text.size();
    while (start < end) {
        int32_t length = 0;
        UChar32 c = codePointAt(text.substr(0, end), start, length);
        if (c < 0 || !u_isUWhiteSpace(c)) break;
        start += static_cast<size_t>(length);
    }
    while (end > start) {
        size_t begin = end - 1;
        while (begin > start && end - begin < 4 &&
               (static_cast<uint8_t>(text[begin]) & 0xC0) == 0x80)
            --begin;
        int32_t length = 0;
        UChar32 c = codePointAt(text.substr(0, end), begin, length);
        if (c < 0 || begin + static_cast<size_t>(length) != end || !u_isUWhiteSpace(c)) break;
        end = begin;
    }
    return std::string(text.substr(start, end - start));
}

std::string trimSpacesAndTabs(std::string_view text) {
    size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos) return "";
    size_t end = text.find_last_not_of(" \t");
    return std::string(text.substr(start, end - start + 1));
}

std::vector<std::string_view> textLines(std::string_view text) {
    std::vector<std::string_view> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string_view::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        bool crlf = end + 1 < text.size() && text[end] == '\r' && text[end + 1] == '\n';
        start = end + (crlf ? 2 : 1);
    }
    return lines;
}

std::string prefixCodePoints(std::string_view text, size_t n) {
    size_t end = 0;
    for (size_t count = 0; count < n && end < text.size(); ++count) {
        int32_t length = 0;
        codePointAt(text, end, length);
        end += static_cast<size_t>(length);
    }
    return std::string(text.substr(0, end));
}

long long decimalValue(std::string_view digits) {
    const auto* s = reinterpret_cast<const uint8_t*>(digits.data());
    int32_t n = static_cast<int32_t>(digits.size()), i = 0;
    long long value = 0;
    if (n == 0 || n > 72) return -1;  // 18 digits of at most 4 bytes each
    int count = 0;
    while (i < n) {
        UChar32 c;
        U8_NEXT(s, i, n, c);
        int32_t d = c < 0 ? -1 : u_charDigitValue(c);
        if (d < 0 || u_charType(c) != U_DECIMAL_DIGIT_NUMBER || ++count > 18) return -1;
        value = value * 10 + d;
    }
    return value;
}

Regex::Regex(const char* pattern, uint32_t flags) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    pattern_.reset(icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(pattern), flags,
                                              parseError, status));
    if (U_FAILURE(status)) {
        std::fprintf(stderr, "kinfolio: regular expression does not compile: %s\n", pattern);
        std::abort();
    }
}

std::unique_ptr<icu::RegexMatcher> Regex::matcher(const icu::UnicodeString& text) const {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> m(pattern_->matcher(text, status));
    if (U_FAILURE(status)) std::abort();
    return m;
}

bool Regex::matchesWhole(const icu::UnicodeString& text) const {
    UErrorCode status = U_ZERO_ERROR;
    return matcher(text)->matches(status) && U_SUCCESS(status);
}

bool Regex::find(const icu::UnicodeString& text) const {
    return matcher(text)->find();
}

std::optional<std::string> groupText(icu::RegexMatcher& m, int group) {
    UErrorCode status = U_ZERO_ERROR;
    if (m.start(group, status) < 0 || U_FAILURE(status)) return std::nullopt;
    status = U_ZERO_ERROR;
    return toUtf8(m.group(group, status));
}

}  // namespace kinfolio
