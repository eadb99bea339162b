#include "importers/text_dates.h"

#include <algorithm>
#include <optional>
#include <span>

#include "model/calendar.h"

namespace kinfolio::Importer {

namespace {

// Four-digit years outside this span are more often reference or part
// numbers ("3025-04-12") than dates on the documents of a couple.
constexpr int kFirstYear = 1900, kLastYear = 2099;

// The most blanks allowed between two parts of one date; wider gaps are
// table columns, not one expression.
constexpr int kMaxBlanks = 3;

struct Name {
    std::string_view text;
    int value;
};

constexpr Name kMonths[] = {
    {"january", 1},   {"jan", 1},   {"february", 2},  {"feb", 2},      {"march", 3},
    {"mar", 3},       {"april", 4}, {"apr", 4},       {"may", 5},      {"june", 6},
    {"jun", 6},       {"july", 7},  {"jul", 7},       {"august", 8},   {"aug", 8},
    {"september", 9}, {"sept", 9},  {"sep", 9},       {"october", 10}, {"oct", 10},
    {"november", 11}, {"nov", 11},  {"december", 12}, {"dec", 12},
};

constexpr Name kWeekdays[] = {
    {"monday", 1}, {"mon", 1},      {"tuesday", 2}, {"tue", 2},    {"tues", 2},  {"wednesday", 3},
    {"wed", 3},    {"thursday", 4}, {"thu", 4},     {"thur", 4},   {"thurs", 4}, {"friday", 5},
    {"fri", 5},    {"saturday", 6}, {"sat", 6},     {"sunday", 7}, {"sun", 7},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isWordChar(char c) {
    return isDigit(c) || isLetter(c);
}

// The byte at `i`, or NUL past the end, so the readers need no bounds checks.
char at(std::string_view s, size_t i) {
    return i < s.size() ? s[i] : '\0';
}

bool has(std::string_view s, size_t i, std::string_view what) {
    return i <= s.size() && s.substr(i).starts_with(what);
}

struct Number {
    int value = 0, digits = 0;
    size_t end = 0;
};

// The run of ASCII digits at `i` when it has at most `maxDigits` of them;
// a longer run is some other number. Reads at most maxDigits + 1 bytes,
// which keeps every attempt short however long the run is.
std::optional<Number> number(std::string_view s, size_t i, int maxDigits) {
    Number n;
    n.end = i;
    while (isDigit(at(s, n.end))) {
        if (n.digits == maxDigits) return std::nullopt;
        n.value = n.value * 10 + (s[n.end] - '0');
        ++n.digits;
        ++n.end;
    }
    if (n.digits == 0) return std::nullopt;
    return n;
}

// The ASCII letters at `i` when there are at most nine, the longest name
// looked for ("September", "Wednesday"); empty otherwise.
std::string_view word(std::string_view s, size_t i) {
    size_t end = i;
    while (isLetter(at(s, end))) {
        if (end - i == 9) return {};
        ++end;
    }
    return s.substr(std::min(i, s.size()), end - i);
}

// Whether the letters `w` (as word() gives them) spell `lowerCase` in any
// case; compared in place, as every word of the text is looked up.
bool wordIs(std::string_view w, std::string_view lowerCase) {
    if (w.size() != lowerCase.size()) return false;
    for (size_t i = 0; i < w.size(); ++i)
        if ((w[i] | 0x20) != lowerCase[i]) return false;
    return true;
}

// The value of a month or weekday name in any case; 0 for any other word.
int nameValue(std::string_view w, std::span<const Name> names) {
    if (w.empty()) return 0;
    for (const Name& n : names)
        if (wordIs(w, n.text)) return n.value;
    return 0;
}

// Just past up to kMaxBlanks spaces, tabs or no-break spaces from `i`.
size_t skipBlanks(std::string_view s, size_t i) {
    for (int n = 0; n < kMaxBlanks; ++n) {
        char c = at(s, i);
        if (c == ' ' || c == '\t')
            i += 1;
        else if (c == '\xC2' && has(s, i, "\u00A0"))
            i += 2;
        else if (c == '\xE2' && has(s, i, "\u202F"))
            i += 3;
        else
            break;
    }
    return i;
}

// Whether the number ending at `end` goes on as a longer one: "25.00",
// "1,204", "12:30", or the date's own separator again ("12/04/2025/7").
bool runsOn(std::string_view s, size_t end, char separator = 0) {
    char c = at(s, end);
    return (c == '.' || c == ',' || c == ':' || (separator && c == separator)) &&
           isDigit(at(s, end + 1));
}

// Whether the number starting at `i` continues an earlier one: the "04" of
// "$1,204" or of "1.12.04.2025".
bool continuesNumber(std::string_view s, size_t i, char separator = 0) {
    if (i < 2 || !isDigit(s[i - 2])) return false;
    char c = s[i - 1];
    return c == '.' || c == ',' || c == ':' || (separator && c == separator);
}

// The year a number names: four digits within the span, or two digits read
// as 1950 to 2049 (birth dates of the 1990s and documents of today); 0 when
// it names none.
int yearOf(const Number& n) {
    if (n.digits == 4) return n.value >= kFirstYear && n.value <= kLastYear ? n.value : 0;
    if (n.digits == 2) return n.value < 50 ? 2000 + n.value : 1900 + n.value;
    return 0;
}

// One date as written, each part 0 when it is not written; `end` is just
// past it.
struct Phrase {
    int year = 0, month = 0, day = 0;
    size_t end = 0;
    bool yearFirst = false;   // "2025-04-12": a 'T' and a time may follow
    bool monthFirst = false;  // "April 12": the other end of a range may be a bare day
    bool complete() const { return year && month && day; }
};

// Just past an ordinal suffix ("1st", "2ND", "12th") at `i`, or `i`.
size_t afterOrdinal(std::string_view s, size_t i) {
    std::string_view w = word(s, i);
    return wordIs(w, "st") || wordIs(w, "nd") || wordIs(w, "rd") || wordIs(w, "th") ? i + 2 : i;
}

// The year after a month-first day: "12, 2025", "12 2025", "12,2025".
std::optional<Number> yearAfterDay(std::string_view s, size_t i) {
    size_t j = at(s, i) == ',' ? i + 1 : i;
    size_t k = skipBlanks(s, j);
    if (k == i) return std::nullopt;
    auto n = number(s, k, 4);
    if (!n || !yearOf(*n) || runsOn(s, n->end)) return std::nullopt;
    return n;
}

// All digits with one separator: "12/04/2025", "4.13.25", "12-04-2025", and
// year first "2025-04-12", "2025/4/12".
std::optional<Phrase> readNumeric(std::string_view s, size_t i, DateOrder order) {
    auto a = number(s, i, 4);
    if (!a || a->digits == 3) return std::nullopt;
    char sep = at(s, a->end);
    if (sep != '/' && sep != '.' && sep != '-') return std::nullopt;
    if (continuesNumber(s, i, sep)) return std::nullopt;
    auto b = number(s, a->end + 1, 2);
    if (!b || at(s, b->end) != sep) return std::nullopt;
    auto c = number(s, b->end + 1, 4);
    if (!c || runsOn(s, c->end, sep)) return std::nullopt;

    Phrase p;
    p.end = c->end;
    if (a->digits == 4) {
        if (c->digits > 2) return std::nullopt;
        p.year = yearOf(*a), p.month = b->value, p.day = c->value, p.yearFirst = true;
    } else {
        p.year = yearOf(*c);
        bool monthFirst =
            order == DateOrder::monthFirst ||
            (order == DateOrder::automatic && !Calendar::makeDate(p.year, b->value, a->value));
        p.day = monthFirst ? b->value : a->value;
        p.month = monthFirst ? a->value : b->value;
    }
    if (!p.year) return std::nullopt;
    return p;
}

// Day, then month name, then the year if written: "12 April 2025",
// "12th of April", "12th day of April", "12-Apr-25" and the airlines'
// "12APR2025". A dot after the day is left out: "1. March 2025 statement"
// is a numbered list far more often than a date.
std::optional<Phrase> readDayMonth(std::string_view s, size_t i) {
    auto d = number(s, i, 2);
    if (!d) return std::nullopt;
    size_t j = afterOrdinal(s, d->end);
    char sep = at(s, j);  // between day and month; a letter when they touch
    if (sep == '-' || sep == '/') {
        ++j;
    } else if (size_t k = skipBlanks(s, j); k > j) {
        sep = ' ', j = k;
        // "the 12th day of April", as leases and certificates write it
        if (wordIs(word(s, j), "day")) {
            k = skipBlanks(s, j + 3);
            if (k == j + 3 || !wordIs(word(s, k), "of")) return std::nullopt;
            j = k;
        }
        if (wordIs(word(s, j), "of")) {
            k = skipBlanks(s, j + 2);
            if (k == j + 2) return std::nullopt;
            j = k;
        }
    }
    std::string_view name = word(s, j);
    int month = nameValue(name, kMonths);
    if (!month) return std::nullopt;

    Phrase p;
    p.day = d->value, p.month = month, p.end = j + name.size();
    if (at(s, p.end) == '.' && name.size() <= 4) ++p.end;  // "Apr."
    size_t y = p.end;
    if (sep == '-' || sep == '/') {
        // "12-Apr-2025" repeats its separator; a lone dash after the month
        // ("12 April - 15 April 2025") leads to the other end of a range.
        if (at(s, y) != sep) return p;
        ++y;
    } else {
        if (at(s, y) == ',') ++y;
        y = skipBlanks(s, y);
    }
    if (auto n = number(s, y, 4); n && yearOf(*n) && !runsOn(s, n->end))
        p.year = yearOf(*n), p.end = n->end;
    return p;
}

// Month name, day, then the year if written: "April 12, 2025",
// "Apr. 12th 2025", "APR 12 2025".
std::optional<Phrase> readMonthDay(std::string_view s, size_t i) {
    std::string_view name = word(s, i);
    int month = nameValue(name, kMonths);
    if (!month) return std::nullopt;
    size_t j = i + name.size();
    if (at(s, j) == '.' && name.size() <= 4) ++j;
    size_t k = skipBlanks(s, j);
    if (k == j) return std::nullopt;
    auto d = number(s, k, 2);
    if (!d) return std::nullopt;
    Phrase p;
    p.month = month, p.day = d->value, p.end = afterOrdinal(s, d->end), p.monthFirst = true;
    if (isLetter(at(s, p.end))) return std::nullopt;
    if (auto y = yearAfterDay(s, p.end)) p.year = yearOf(*y), p.end = y->end;
    return p;
}

// A day alone, the first end of a range: the "12" of "12–15 April 2025".
std::optional<Phrase> readDay(std::string_view s, size_t i) {
    auto d = number(s, i, 2);
    if (!d) return std::nullopt;
    Phrase p;
    p.day = d->value, p.end = afterOrdinal(s, d->end);
    if (isLetter(at(s, p.end))) return std::nullopt;
    return p;
}

// Just past a weekday that leads a date ("Sat ", "Saturday, ", "Tue. "),
// or `i` when there is none: the weekday belongs to the date's range.
size_t afterWeekday(std::string_view s, size_t i) {
    std::string_view name = word(s, i);
    if (!nameValue(name, kWeekdays)) return i;
    size_t j = i + name.size();
    if (at(s, j) == '.') ++j;
    bool comma = at(s, j) == ',';
    if (comma) ++j;
    size_t k = skipBlanks(s, j);
    return k > j || comma ? k : i;
}

// One date, whole or in part, with the weekday before it.
std::optional<Phrase> readPhrase(std::string_view s, size_t i, DateOrder order) {
    size_t j = afterWeekday(s, i);
    if (!isDigit(at(s, j))) return readMonthDay(s, j);
    if (continuesNumber(s, j)) return std::nullopt;
    if (auto p = readNumeric(s, j, order)) return p;
    if (auto p = readDayMonth(s, j)) return p;
    return readDay(s, j);
}

// Just past the dash or word that joins the two ends of a range, or 0.
size_t afterRangeJoin(std::string_view s, size_t i) {
    size_t j = skipBlanks(s, i);
    if (at(s, j) == '-') return skipBlanks(s, j + 1);
    if (has(s, j, "\u2013") || has(s, j, "\u2014"))  // en and em dash
        return skipBlanks(s, j + 3);
    std::string_view w = word(s, j);
    if (j == i || !(wordIs(w, "to") || wordIs(w, "until") || wordIs(w, "till") ||
                    wordIs(w, "through") || wordIs(w, "thru")))
        return 0;
    size_t k = skipBlanks(s, j + w.size());
    return k > j + w.size() ? k : 0;
}

struct Clock {
    int hour = 0, minute = 0, second = 0;
    size_t end = 0;
};

// Just past "am", "pm", "a.m." or "p.m." at `i` (any case), or `i`.
size_t afterMeridiem(std::string_view s, size_t i, bool& pm) {
    char c = static_cast<char>(at(s, i) | 0x20);
    if (c != 'a' && c != 'p') return i;
    pm = c == 'p';
    std::string_view w = word(s, i);
    if (wordIs(w, "am") || wordIs(w, "pm")) return i + 2;
    if (at(s, i + 1) == '.' && (at(s, i + 2) | 0x20) == 'm' && at(s, i + 3) == '.') return i + 4;
    return i;
}

// A time of day: "14:30", "14:30:05", "2:30 PM", "9am"; a bare hour only
// with am or pm.
std::optional<Clock> readClock(std::string_view s, size_t i, bool allowMeridiem) {
    auto h = number(s, i, 2);
    if (!h) return std::nullopt;
    Clock c;
    c.hour = h->value, c.end = h->end;
    bool minutes = at(s, c.end) == ':';
    if (minutes) {
        auto m = number(s, c.end + 1, 2);
        if (!m || m->digits != 2) return std::nullopt;
        c.minute = m->value, c.end = m->end;
        if (at(s, c.end) == ':') {
            auto sec = number(s, c.end + 1, 2);
            if (!sec || sec->digits != 2) return std::nullopt;
            c.second = sec->value, c.end = sec->end;
        }
    }
    bool pm = false;
    size_t k = skipBlanks(s, c.end);
    if (size_t m = allowMeridiem ? afterMeridiem(s, k, pm) : k; m > k) {
        if (c.hour < 1 || c.hour > 12) return std::nullopt;
        c.hour = c.hour % 12 + (pm ? 12 : 0), c.end = m;
    } else if (!minutes || c.hour > 23) {
        return std::nullopt;
    }
    if (c.minute > 59 || c.second > 59) return std::nullopt;
    // "Z" for UTC may follow; the wall-clock time is kept as written.
    char next = at(s, c.end);
    if ((isWordChar(next) && next != 'Z') || runsOn(s, c.end)) return std::nullopt;
    return c;
}

// A time written after a date: " 14:30", ", 2:30 PM", " at 9 am", " @ 18:00",
// and "T14:30:00" after a year-first date.
std::optional<Clock> readTime(std::string_view s, size_t i, bool yearFirst) {
    if (yearFirst && (at(s, i) == 'T' || at(s, i) == 't')) return readClock(s, i + 1, false);
    size_t j = at(s, i) == ',' ? i + 1 : i;
    size_t k = skipBlanks(s, j);
    if (k == j) return std::nullopt;
    size_t lead = wordIs(word(s, k), "at") ? 2 : at(s, k) == '@' ? 1 : 0;
    if (lead) {
        j = k + lead;
        k = skipBlanks(s, j);
        if (k == j) return std::nullopt;
    }
    return readClock(s, k, true);
}

// A range whose first end lacks its year, or its month and year, and takes
// them from the second end: "12–15 April 2025", "12 April to 3 May 2025",
// "April 12–15, 2025", "28 Dec – 3 Jan 2025" (the first end then falls in
// the year before). Both days are kept, each with the range of the whole
// expression: the first is the day a document is dated by, and neither end
// reads as a date without the other. Returns just past the range, or 0.
size_t readRange(std::string_view s, size_t i, const Phrase& first, DateOrder order,
                 std::vector<TextDate>& found) {
    size_t j = afterRangeJoin(s, first.end);
    if (!j) return 0;
    auto second = readPhrase(s, j, order);
    if (!second) return 0;
    if (first.monthFirst && !second->month) {
        auto y = yearAfterDay(s, second->end);
        if (!y) return 0;
        second->month = first.month, second->year = yearOf(*y), second->end = y->end;
    }
    if (!second->complete() || isWordChar(at(s, second->end))) return 0;

    Phrase start = first;
    start.year = second->year;
    if (!start.month) {
        // A bare day only starts a range within one month: "12–15".
        if (first.day >= second->day) return 0;
        start.month = second->month;
    }
    auto from = Calendar::makeDate(start.year, start.month, start.day);
    auto to = Calendar::makeDate(second->year, second->month, second->day);
    if (from && to && *from > *to)
        from = Calendar::makeDate(start.year - 1, start.month, start.day);
    if (!from || !to) return 0;
    size_t length = second->end - i;
    found.push_back({i, length, *from, false});
    found.push_back({i, length, *to, false});
    return second->end;
}

// Reads the date expression starting at `i` into `found`; returns just past
// it, or 0 when none starts there.
size_t readExpression(std::string_view s, size_t i, DateOrder order, std::vector<TextDate>& found) {
    auto p = readPhrase(s, i, order);
    if (!p) return 0;
    if (!p->complete()) return readRange(s, i, *p, order, found);
    auto day = Calendar::makeDate(p->year, p->month, p->day);
    if (!day) return 0;
    TextDate d{i, p->end - i, *day, false};
    if (auto t = readTime(s, p->end, p->yearFirst)) {
        d.date = *Calendar::makeDate(p->year, p->month, p->day, t->hour, t->minute, t->second);
        d.length = t->end - i, d.hasTime = true;
    } else if (isWordChar(at(s, p->end)))
        return 0;
    found.push_back(d);
    return d.begin + d.length;
}

}  // namespace

std::vector<TextDate> findDates(std::string_view text, DateOrder order) {
    std::vector<TextDate> found;
    size_t i = 0;
    while (i < text.size()) {
        // A date starts where a word starts: never inside "v2" or "112/04".
        if (isWordChar(text[i]) && (i == 0 || !isWordChar(text[i - 1])))
            if (size_t end = readExpression(text, i, order, found)) {
                i = end;
                continue;
            }
        ++i;
    }
    return found;
}

int monthNumber(std::string_view word) {
    return nameValue(word, kMonths);
}

}  // namespace kinfolio::Importer
