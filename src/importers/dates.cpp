#include "importers/dates.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <map>
#include <set>

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

constexpr std::array<const char*, 6> kISOPatterns = {
    "yyyy-MM-dd HH:mm:ss",   "yyyy-MM-dd HH:mm",   "yyyy-MM-dd",
    "yyyy-MM-dd'T'HH:mm:ss", "yyyy-MM-dd'T'HH:mm", "yyyy:MM:dd HH:mm:ss",
};

// The order inside these lists is deliberate, including the places of
// "d/M/yy h:mm:ss a" and of the dotted two-digit-year patterns.
constexpr std::array<const char*, 13> kDayFirstPatterns = {
    "d/M/yyyy HH:mm:ss",  "d/M/yyyy HH:mm",  "d/M/yy HH:mm:ss",   "d/M/yy HH:mm",
    "d/M/yyyy h:mm:ss a", "d/M/yyyy h:mm a", "d/M/yy h:mm a",     "d/M/yy h:mm:ss a",
    "d.M.yy HH:mm:ss",    "d.M.yy HH:mm",    "d.M.yyyy HH:mm:ss", "d.M.yyyy HH:mm",
    "d-M-yyyy HH:mm",
};

constexpr std::array<const char*, 9> kMonthFirstPatterns = {
    "M/d/yyyy HH:mm:ss", "M/d/yyyy HH:mm",     "M/d/yy HH:mm:ss",
    "M/d/yy HH:mm",      "M/d/yyyy h:mm:ss a", "M/d/yyyy h:mm a",
    "M/d/yy h:mm a",     "M/d/yy h:mm:ss a",   "M-d-yyyy HH:mm",
};

// The fixed-width, all-ASCII layouts that nearly every export and
// spreadsheet writes, read without ICU: a million-row chat must not pay for
// a formatter per row. Each layout is one that the pattern lists would read
// with the very first pattern that fits it (no earlier pattern can read the
// same text), and anything out of range is left to those patterns, so the
// answer is always the one ICU would give.
std::optional<Instant> quickDate(std::string_view s, DateOrder order) {
    auto digits = [&](size_t at, size_t count) -> int {
        int v = 0;
        for (size_t i = at; i < at + count; ++i) {
            if (s[i] < '0' || s[i] > '9') return -1;
            v = v * 10 + (s[i] - '0');
        }
        return v;
    };
    int year, month, day, hour = 0, minute = 0, second = 0;
    size_t time;  // where "HH:mm" starts, if the layout has a time
    if (s.size() >= 10 && s[4] == '-' && s[7] == '-') {
        // yyyy-MM-dd, with " HH:mm", " HH:mm:ss" or 'T' in place of the space
        year = digits(0, 4), month = digits(5, 2), day = digits(8, 2);
        if (s.size() == 10)
            time = 0;
        else if (s[10] == ' ' || s[10] == 'T')
            time = 11;
        else
            return std::nullopt;
    } else if (s.size() >= 16 && s[2] == '/' && s[5] == '/' && s[10] == ' ' &&
               order != DateOrder::monthFirst) {
        day = digits(0, 2), month = digits(3, 2), year = digits(6, 4), time = 11;
    } else if (s.size() >= 16 && s[2] == '/' && s[5] == '/' && s[10] == ' ') {
        month = digits(0, 2), day = digits(3, 2), year = digits(6, 4), time = 11;
    } else {
        return std::nullopt;
    }
    if (time) {
        if (s.size() != time + 5 && !(s.size() == time + 8 && s[time + 5] == ':'))
            return std::nullopt;
        if (s[time + 2] != ':') return std::nullopt;
        hour = digits(time, 2), minute = digits(time + 3, 2);
        if (s.size() == time + 8) second = digits(time + 6, 2);
    }
    if (year < 1000 || month < 0 || day < 0 || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59)
        return std::nullopt;
    return Calendar::makeDate(year, month, day, hour, minute, second);
}

}  // namespace

std::optional<Instant> date(std::string_view text, DateOrder order) {
    if (auto d = quickDate(text, order)) return d;
    std::string s = trimWhitespace(text);
    s = replaceAll(s, "\u202F", " ");
    s = removeAll(s, "\u200E");

    // A timestamp with its own zone is refused rather than converted.
    static const Regex zoneSuffix("(?:[zZ]|[+-]\\d{2}:?\\d{2})$");
    icu::UnicodeString u = toUnicode(s);
    if (zoneSuffix.find(u)) return std::nullopt;

    for (const char* p : kISOPatterns)
        if (auto d = Calendar::parseUnicode(u, p)) return d;
    if (order == DateOrder::monthFirst) {
        for (const char* p : kMonthFirstPatterns)
            if (auto d = Calendar::parseUnicode(u, p)) return d;
    } else {
        for (const char* p : kDayFirstPatterns)
            if (auto d = Calendar::parseUnicode(u, p)) return d;
    }
    return std::nullopt;
}

std::optional<DateOrder> detectOrder(std::string_view text) {
    static const Regex startOfLineDate("^\\[?(\\d{1,2})[/.-](\\d{1,2})[/.-]\\d{2,4}",
                                       UREGEX_MULTILINE);
    icu::UnicodeString u = toUnicode(text);
    auto m = startOfLineDate.matcher(u);
    bool any = false, dayFirst = false, monthFirst = false;
    while (m->find()) {
        any = true;
        // \d takes digits of every script; std::stoi would throw on them.
        long long a = decimalValue(*groupText(*m, 1));
        long long b = decimalValue(*groupText(*m, 2));
        if (a > 12) {
            if (b > 12)
                dayFirst = monthFirst = true;
            else
                dayFirst = true;
        } else if (b >= 13) {
            monthFirst = true;
        }
    }
    if (!any || dayFirst == monthFirst) return std::nullopt;
    return dayFirst ? DateOrder::dayFirst : DateOrder::monthFirst;
}

}  // namespace kinfolio::Importer
