#include "importers/whatsapp_fast.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

#include "importers/dates.h"
#include "model/calendar.h"
#include "model/parallel.h"
#include "model/text.h"

namespace kinfolio::Importer::fast {

namespace {

// What one character is to the expression: \d and \s follow ICU's Unicode
// rules, so anything outside ASCII that might count is left to ICU.
enum class Kind { digit, space, other, unsure };

struct Char {
    Kind kind;
    size_t length;
};

Char classifyNonAscii(std::string_view s, size_t i);

// ASCII answered inline: it is nearly every character a timestamp holds.
inline Char classify(std::string_view s, size_t i) {
    if (i >= s.size()) return {Kind::other, 0};
    auto c = static_cast<unsigned char>(s[i]);
    if (c >= '0' && c <= '9') return {Kind::digit, 1};
    if (c == ' ' || c == '\t') return {Kind::space, 1};
    if (c < 0x20) return {Kind::unsure, 1};  // \v, \f and the rest: rare, ICU decides
    if (c < 0x80) return {Kind::other, 1};
    return classifyNonAscii(s, i);
}

Char classifyNonAscii(std::string_view s, size_t i) {
    int32_t at = static_cast<int32_t>(i), end = static_cast<int32_t>(s.size());
    UChar32 cp;
    U8_NEXT(reinterpret_cast<const uint8_t*>(s.data()), at, end, cp);
    size_t length = static_cast<size_t>(at) - i;
    // The two spaces exports really use before the marker or after the comma.
    if (cp == 0x202F || cp == 0xA0) return {Kind::space, length};
    if (cp < 0 || u_isdigit(cp) || u_isUWhiteSpace(cp) || u_isspace(cp))
        return {Kind::unsure, length};
    return {Kind::other, length};
}

struct Cursor {
    std::string_view s;
    size_t i = 0;
    bool unsure = false;

    Kind peek() {
        Char c = classify(s, i);
        if (c.kind == Kind::unsure) unsure = true;
        return c.kind;
    }
    bool is(char c) const { return i < s.size() && s[i] == c; }
    // A run of min..max digits that the next character does not continue.
    bool digits(size_t min, size_t max) {
        size_t n = 0;
        while (n < max && peek() == Kind::digit) {
            ++i;
            ++n;
        }
        if (peek() == Kind::digit) return false;  // a longer run never matches
        return !unsure && n >= min;
    }
    size_t spaces() {
        size_t n = 0;
        while (peek() == Kind::space) {
            i += classify(s, i).length;
            ++n;
        }
        return n;
    }
    // The sets are two to four characters: a loop beats a call to memchr.
    bool oneOf(std::string_view set) {
        if (i >= s.size()) return false;
        for (char c : set)
            if (s[i] == c) {
                ++i;
                return true;
            }
        return false;
    }
};

// \d{1,4}[/.-]\d{1,2}[/.-]\d{1,4},?\s+\d{1,2}:\d{2}(?::\d{2})?(?:\s*[APap]\.?\s?[Mm]\.?)?
bool timestampPart(Cursor& c) {
    if (!c.digits(1, 4) || !c.oneOf("/.-") || !c.digits(1, 2) || !c.oneOf("/.-") || !c.digits(1, 4))
        return false;
    c.oneOf(",");
    if (c.spaces() == 0 || !c.digits(1, 2) || !c.oneOf(":")) return false;
    if (c.peek() != Kind::digit || (++c.i, c.peek() != Kind::digit)) return false;
    ++c.i;
    if (c.peek() == Kind::digit) return false;
    if (c.is(':')) {
        size_t back = c.i++;
        if (c.peek() == Kind::digit && (++c.i, c.peek() == Kind::digit)) {
            ++c.i;
            if (c.peek() == Kind::digit) return false;
        } else {
            c.i = back;  // ":" without two digits ends the timestamp here
        }
    }
    // The optional marker; when it does not complete, nothing of it is taken.
    size_t before = c.i;
    c.spaces();
    if (c.oneOf("APap")) {
        c.oneOf(".");
        if (c.peek() == Kind::space) c.i += classify(c.s, c.i).length;
        if (c.oneOf("Mm")) {
            c.oneOf(".");
            return !c.unsure;
        }
    }
    c.i = before;
    return !c.unsure;
}

// Whether a line break that the expressions see begins at `i`: \n, \v, \f,
// \r, U+0085, U+2028 or U+2029.
bool isLineBreakAt(std::string_view s, size_t i) {
    auto c = static_cast<unsigned char>(s[i]);
    if (c >= 0x0A && c <= 0x0D) return true;
    if (c == 0xC2) return i + 1 < s.size() && static_cast<unsigned char>(s[i + 1]) == 0x85;
    return c == 0xE2 && i + 2 < s.size() && s[i + 1] == '\x80' &&
           (s[i + 2] == '\xA8' || s[i + 2] == '\xA9');
}

LineMatch noMatch() {
    return {Verdict::no, {}, {}};
}

}  // namespace

LineMatch matchLine(std::string_view line, bool plainAscii) {
    Cursor c{line};
    bool iphone = c.is('[');
    if (iphone) ++c.i;
    size_t start = c.i;
    bool ok = timestampPart(c);
    if (c.unsure) return {};
    if (!ok) return noMatch();
    std::string_view stamp = line.substr(start, c.i - start);
    if (iphone) {
        if (!c.oneOf("]")) return noMatch();
    } else {
        if (c.spaces() == 0) return c.unsure ? LineMatch{} : noMatch();
        if (!c.oneOf("-")) {
            if (line.substr(c.i, 3) != "\u2013") return noMatch();
            c.i += 3;
        }
    }
    c.spaces();
    if (c.unsure) return {};
    if (!plainAscii && holdsLineBreak(line.substr(c.i))) return {};
    return {Verdict::yes, stamp, line.substr(c.i)};
}

Verdict dateLikeStart(std::string_view line) {
    Cursor c{line};
    if (c.is('[')) ++c.i;
    // The last run may go on: only its first digit is needed.
    bool ok = c.digits(1, 4) && c.oneOf("/.-") && c.digits(1, 2) && c.oneOf("/.-") &&
              c.peek() == Kind::digit;
    if (c.unsure) return Verdict::unsure;
    return ok ? Verdict::yes : Verdict::no;
}

namespace {

// Reads exactly the ASCII digits of [from, to) into value.
bool number(std::string_view s, size_t from, size_t to, int& value) {
    if (from >= to || to > s.size()) return false;
    value = 0;
    for (size_t i = from; i < to; ++i) {
        if (s[i] < '0' || s[i] > '9') return false;
        value = value * 10 + (s[i] - '0');
    }
    return true;
}

}  // namespace

namespace {

// The instant of a stamp's parts, `a` and `b` being day and month in either
// order and `marker` 0 for none, 1 for AM, 2 for PM; none when unsure.
std::optional<Instant> instantOf(int a, int b, int year, size_t yearDigits, int hour, int minute,
                                 int second, int marker, DateOrder order) {
    // ICU counts days in the Julian calendar before the Gregorian reform of
    // 1582; such years are left to it.
    if (yearDigits == 4 && year < 1600) return std::nullopt;
    if (yearDigits == 2) {
        int start = Calendar::centuryStartYear();
        int full = Calendar::fullYear(year);
        if (full <= start + 1 || full >= start + 99) return std::nullopt;
        year = full;
    }
    if (minute > 59 || second > 59) return std::nullopt;
    if (marker == 0 && hour > 23) return std::nullopt;
    if (marker != 0) {
        if (hour < 1 || hour > 12) return std::nullopt;
        hour = hour % 12 + (marker == 2 ? 12 : 0);
    }
    int day = order == DateOrder::monthFirst ? b : a;
    int month = order == DateOrder::monthFirst ? a : b;
    // Messages come in runs of one day, whose start is worked out once. The
    // sum is exact: whole seconds far below 2^53.
    thread_local int lastYear = 0, lastMonth = 0, lastDay = 0;
    thread_local Instant dayStart = 0;
    if (year != lastYear || month != lastMonth || day != lastDay) {
        auto start = Calendar::makeDate(year, month, day, 0, 0, 0);
        if (!start) return std::nullopt;
        lastYear = year;
        lastMonth = month;
        lastDay = day;
        dayStart = *start;
    }
    return dayStart + hour * 3600.0 + minute * 60.0 + second;
}

}  // namespace

// Handles "d/M/y H:mm[:ss][ AM|PM]" (and month first) and "d.M.y H:mm[:ss]"
// with a 4-digit year from 1600 on or a 2-digit year away from the pivot
// year, one space between the parts and values in range: exactly the cases
// where the first pattern of the lists that reads the text is known. The rest
// goes to Importer::date.
std::optional<Instant> timestamp(std::string_view s, DateOrder order) {
    size_t p1 = 0;
    while (p1 < s.size() && s[p1] != '/' && s[p1] != '.')
        ++p1;
    if (p1 == s.size()) return std::nullopt;
    char sep = s[p1];
    if (sep == '.' && order == DateOrder::monthFirst) return std::nullopt;
    size_t p2 = s.find(sep, p1 + 1);
    size_t space = s.find(' ', p1);
    if (p2 == std::string_view::npos || space == std::string_view::npos || p2 > space)
        return std::nullopt;
    size_t colon = s.find(':', space);
    if (colon == std::string_view::npos) return std::nullopt;
    int a, b, year, hour, minute, second = 0;
    if (p1 > 2 || p2 - p1 - 1 > 2 || !number(s, 0, p1, a) || !number(s, p1 + 1, p2, b))
        return std::nullopt;
    // The comma written after the year, which the normalised form drops.
    size_t yearEnd = s[space - 1] == ',' ? space - 1 : space;
    size_t yearDigits = yearEnd - p2 - 1;
    if ((yearDigits != 2 && yearDigits != 4) || !number(s, p2 + 1, yearEnd, year))
        return std::nullopt;
    if (colon - space - 1 < 1 || colon - space - 1 > 2 || !number(s, space + 1, colon, hour))
        return std::nullopt;
    if (!number(s, colon + 1, colon + 3, minute)) return std::nullopt;
    size_t i = colon + 3;
    if (i < s.size() && s[i] == ':') {
        if (!number(s, i + 1, i + 3, second)) return std::nullopt;
        i += 3;
    }
    int marker = 0;  // 0 none, 1 AM, 2 PM
    if (i < s.size()) {
        std::string_view tail = s.substr(i);
        if (sep == '.') return std::nullopt;
        if (tail == " AM" || tail ==
                                 "\u202F"
                                 "AM")
            marker = 1;
        else if (tail == " PM" || tail ==
                                      "\u202F"
                                      "PM")
            marker = 2;
        else
            return std::nullopt;
    }
    return instantOf(a, b, year, yearDigits, hour, minute, second, marker, order);
}

namespace {

// Reads a run of min..max ASCII digits at `i` that no further digit
// continues.
inline bool digitRun(std::string_view s, size_t& i, size_t min, size_t max, int& value) {
    size_t n = 0;
    value = 0;
    for (; n < max && i < s.size() && s[i] >= '0' && s[i] <= '9'; ++n, ++i)
        value = value * 10 + (s[i] - '0');
    return n >= min && !(i < s.size() && s[i] >= '0' && s[i] <= '9');
}

// Compared a character at a time: the words are one to three characters,
// and a call to memcmp for each costs more than the comparison.
inline bool skip(std::string_view s, size_t& i, std::string_view what) {
    if (i > s.size() || s.size() - i < what.size()) return false;
    for (size_t k = 0; k < what.size(); ++k)
        if (s[i + k] != what[k]) return false;
    i += what.size();
    return true;
}

}  // namespace

bool quickLine(std::string_view line, DateOrder order, QuickLine& out) {
    size_t i = 0;
    bool iphone = skip(line, i, "[");
    int a, b, year, hour, minute, second = 0, marker = 0;
    if (!digitRun(line, i, 1, 2, a) || i >= line.size()) return false;
    char sep = line[i++];
    if ((sep != '/' && sep != '.') || !digitRun(line, i, 1, 2, b) || !skip(line, i, {&sep, 1}))
        return false;
    size_t yearStart = i;
    if (!digitRun(line, i, 2, 4, year) || i - yearStart == 3) return false;
    size_t yearDigits = i - yearStart;
    skip(line, i, ",");
    if (!skip(line, i, " ") || !digitRun(line, i, 1, 2, hour) || !skip(line, i, ":") ||
        !digitRun(line, i, 2, 2, minute))
        return false;
    if (skip(line, i, ":") && !digitRun(line, i, 2, 2, second)) return false;
    if (skip(line, i, " AM"))
        marker = 1;
    else if (skip(line, i, " PM"))
        marker = 2;
    // Dotted dates are day first; a marker after one is left to ICU.
    if (sep == '.' && (marker != 0 || order == DateOrder::monthFirst)) return false;
    if (!skip(line, i, iphone ? "]" : " -")) return false;
    while (i < line.size() && line[i] == ' ')
        ++i;
    auto date = instantOf(a, b, year, yearDigits, hour, minute, second, marker, order);
    if (!date) return false;
    // Filled in place: a returned record is put together on the stack in
    // pieces and read back whole, which the processor cannot forward.
    out.date = *date;
    out.rest = line.substr(i);
    out.first = a;
    out.second = b;
    return true;
}

namespace {

// Whether the character at `i` is a digit to \d: ASCII ones are, no other
// ASCII is; outside ASCII, one that may be leaves the answer unsure.
Kind digitAt(std::string_view s, size_t i) {
    if (i >= s.size()) return Kind::other;
    auto c = static_cast<unsigned char>(s[i]);
    if (c < 0x80) return c >= '0' && c <= '9' ? Kind::digit : Kind::other;
    Char ch = classifyNonAscii(s, i);
    return ch.kind == Kind::other ? Kind::other : Kind::unsure;
}

// A run of one or two digits that no third continues, its value in `value`.
bool dayOrMonth(std::string_view s, size_t& i, int& value, bool& unsure) {
    value = 0;
    size_t n = 0;
    for (Kind k; n < 3 && (k = digitAt(s, i)) != Kind::other; ++n, ++i) {
        if (k == Kind::unsure) {
            unsure = true;
            return false;
        }
        value = value * 10 + (s[i] - '0');
    }
    return n >= 1 && n <= 2;
}

bool isDateSeparator(std::string_view s, size_t i) {
    return i < s.size() && (s[i] == '/' || s[i] == '.' || s[i] == '-');
}

// A piece of a text split at '\n' and '\r' as the expression's "^" splits
// it; a text that it would also split elsewhere is left to it.
OrderClues orderClues(std::string_view text) {
    OrderClues clues;
    size_t start = 0;
    while (start <= text.size()) {
        clues.lookAt(text.substr(start));
        size_t next = plainAsciiEnd(text, start);
        while (next < text.size() && text[next] != '\n' && text[next] != '\r') {
            if (isLineBreakAt(text, next)) return {true};
            next = plainAsciiEnd(text, next + 1);
        }
        if (next == text.size()) break;
        start = next + 1;
    }
    return clues;
}

}  // namespace

bool holdsLineBreak(std::string_view s) {
    for (size_t i = plainAsciiEnd(s, 0); i < s.size(); i = plainAsciiEnd(s, i + 1))
        if (isLineBreakAt(s, i)) return true;
    return false;
}

void OrderClues::lookAt(std::string_view from) {
    // ^\[?(\d{1,2})[/.-](\d{1,2})[/.-]\d{2,4}: only its first ten bytes count.
    size_t i = from.starts_with('[') ? 1 : 0;
    int a = 0, b = 0;
    bool matches = dayOrMonth(from, i, a, unsure) && isDateSeparator(from, i++) &&
                   dayOrMonth(from, i, b, unsure) && isDateSeparator(from, i++);
    for (int k = 0; matches && k < 2; ++k, ++i) {
        Kind d = digitAt(from, i);
        if (d == Kind::unsure) unsure = true;
        matches = d == Kind::digit;
    }
    if (matches) sawDate(a, b);
}

void OrderClues::sawDate(int first, int second) {
    any = true;
    if (first > 12) {
        dayFirst = true;
        if (second > 12) monthFirst = true;
    } else if (second >= 13) {
        monthFirst = true;
    }
}

void OrderClues::join(const OrderClues& other) {
    unsure |= other.unsure;
    any |= other.any;
    dayFirst |= other.dayFirst;
    monthFirst |= other.monthFirst;
}

std::optional<std::optional<DateOrder>> OrderClues::verdict() const {
    if (unsure) return std::nullopt;
    std::optional<DateOrder> found;  // none: no clue, or clues for both orders
    if (any && dayFirst != monthFirst)
        found = dayFirst ? DateOrder::dayFirst : DateOrder::monthFirst;
    return std::make_optional(found);
}

std::optional<std::optional<DateOrder>> detectOrder(std::string_view text) {
    // Lines are independent, so a large chat is looked at in pieces cut
    // after a line break, on every core.
    std::vector<size_t> cuts = Parallel::lineCuts(text);
    std::vector<OrderClues> pieces(cuts.size() - 1);
    Parallel::forEach(pieces.size(), [&](size_t k) {
        pieces[k] = orderClues(text.substr(cuts[k], cuts[k + 1] - cuts[k]));
    });
    OrderClues all;
    for (const auto& p : pieces)
        all.join(p);
    return all.verdict();
}

std::optional<DateOrder> likelyOrder(std::string_view text) {
    constexpr size_t kStretches = 16, kStretch = 16 << 10;
    OrderClues clues;
    for (size_t k = 0; k < kStretches; ++k) {
        // Each stretch starts and ends at a line start.
        size_t from = k * text.size() / kStretches;
        if (k > 0) {
            from = text.find('\n', from);
            if (from == std::string_view::npos) break;
            ++from;
        }
        size_t to = std::min(text.size(), from + kStretch);
        if (to < text.size()) {
            to = text.rfind('\n', to);
            if (to == std::string_view::npos || to < from) continue;
            ++to;
        }
        clues.join(orderClues(text.substr(from, to - from)));
    }
    auto verdict = clues.verdict();
    return verdict ? *verdict : std::nullopt;
}

}  // namespace kinfolio::Importer::fast
