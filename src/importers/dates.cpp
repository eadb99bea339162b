#include "importers/dates.h"

#include <unicode/simpletz.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <map>
#include <set>

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

double udateToInstant(UDate d) {
    return instantFromUnix(d / 1000.0);
}
UDate instantToUDate(Instant t) {
    return unixFromInstant(t) * 1000.0;
}

struct CachedFormatter {
    std::unique_ptr<icu::SimpleDateFormat> format;
    bool fourDigitYear = false;
};

// Formatters are costly to make; each thread keeps its own (ICU formatters
// are not safe to share between threads).
CachedFormatter& cached(std::string_view pattern) {
    thread_local std::map<std::string, CachedFormatter, std::less<>> cache;
    auto it = cache.find(pattern);
    if (it == cache.end()) {
        CachedFormatter f{formatter(pattern), pattern.find("yyyy") != std::string_view::npos};
        it = cache.emplace(std::string(pattern), std::move(f)).first;
    }
    return it->second;
}

std::optional<Instant> parseWhole(const icu::UnicodeString& text, CachedFormatter& f) {
    icu::ParsePosition pos(0);
    UDate d = f.format->parse(text, pos);
    if (pos.getErrorIndex() >= 0 || pos.getIndex() != text.length()) return std::nullopt;
    // ICU reads a two-digit year against "yyyy" as the year 25 AD; a
    // four-digit pattern must see four digits, so "1/2/25" falls through to
    // the "yy" patterns as intended.
    if (f.fourDigitYear && civil(udateToInstant(d)).year < 1000) return std::nullopt;
    return udateToInstant(d);
}

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
    return makeDate(year, month, day, hour, minute, second);
}

}  // namespace

const icu::TimeZone& zone() {
    static const icu::SimpleTimeZone zeroZone(0, icu::UnicodeString(u"UTC"));
    return zeroZone;
}

std::unique_ptr<icu::SimpleDateFormat> formatter(std::string_view pattern) {
    UErrorCode status = U_ZERO_ERROR;
    auto f = std::make_unique<icu::SimpleDateFormat>(toUnicode(pattern), icu::Locale("en_US_POSIX"),
                                                     status);
    if (U_FAILURE(status)) std::abort();  // the patterns are fixed texts
    f->setTimeZone(zone());
    f->setLenient(false);
    return f;
}

std::string format(Instant t, std::string_view pattern) {
    icu::UnicodeString out;
    cached(pattern).format->format(instantToUDate(t), out);
    return toUtf8(out);
}

std::optional<Instant> parse(std::string_view text, std::string_view pattern) {
    return parseWhole(toUnicode(text), cached(pattern));
}

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
        if (auto d = parseWhole(u, cached(p))) return d;
    if (order == DateOrder::monthFirst) {
        for (const char* p : kMonthFirstPatterns)
            if (auto d = parseWhole(u, cached(p))) return d;
    } else {
        for (const char* p : kDayFirstPatterns)
            if (auto d = parseWhole(u, cached(p))) return d;
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

std::string duration(double seconds) {
    // Lengths come from the files (a call notice, a JSON number) and may be
    // negative, not a number or absurdly large; the conversion below is only
    // defined within range.
    if (!(seconds > 0)) seconds = 0;
    seconds = std::min(seconds, 1e15);
    auto s = static_cast<long long>(std::round(seconds));  // halves away from zero
    if (s <= 59) return std::to_string(s) + " s";
    if (s < 3600) {
        std::string text = std::to_string(s / 60) + " min";
        if (s % 60 != 0) text += " " + std::to_string(s % 60) + " s";
        return text;
    }
    return std::to_string(s / 3600) + " h " + std::to_string((s % 3600) / 60) + " min";
}

const std::vector<std::string>& commonTimeZones() {
    static const std::vector<std::string> zones = [] {
        std::set<std::string> ids = {
            "Europe/London",
            "Europe/Paris",
            "Europe/Berlin",
            "America/New_York",
            "America/Chicago",
            "America/Denver",
            "America/Los_Angeles",
            "America/Toronto",
            "America/Vancouver",
            "Australia/Sydney",
            "Australia/Perth",
            "Asia/Shanghai",
            "Asia/Hong_Kong",
            "Asia/Singapore",
            "Asia/Tokyo",
            "Asia/Seoul",
            "Asia/Kolkata",
            "Asia/Manila",
            "Asia/Bangkok",
            "Asia/Dubai",
            "Africa/Johannesburg",
            "Pacific/Auckland",
            "UTC",
        };
        ids.insert(currentTimeZoneID());
        return std::vector<std::string>(ids.begin(), ids.end());
    }();
    return zones;
}

std::optional<Instant> makeDate(int year, int month, int day, int hour, int minute, int second) {
    using namespace std::chrono;
    year_month_day ymd{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                       std::chrono::day{static_cast<unsigned>(day)}};
    if (month < 1 || month > 12 || day < 1 || !ymd.ok()) return std::nullopt;
    auto days = sys_days{ymd}.time_since_epoch().count();
    double unix = static_cast<double>(days) * 86400.0 + hour * 3600.0 + minute * 60.0 + second;
    return instantFromUnix(unix);
}

CivilTime civil(Instant t) {
    using namespace std::chrono;
    // An instant read from a file (a JSON number of milliseconds) can lie far
    // outside any calendar, or be no number at all; held within some 27,000
    // years of 1970, the conversions below stay defined.
    constexpr double kLimit = 1e7 * 86400.0;
    double unix = std::floor(unixFromInstant(t));
    if (!(unix >= -kLimit)) unix = -kLimit;  // also NaN
    unix = std::min(unix, kLimit);
    auto days = static_cast<long long>(std::floor(unix / 86400.0));
    long long secs = static_cast<long long>(unix) - days * 86400;
    year_month_day ymd{sys_days{std::chrono::days{days}}};
    return CivilTime{static_cast<int>(ymd.year()),          static_cast<int>(unsigned(ymd.month())),
                     static_cast<int>(unsigned(ymd.day())), static_cast<int>(secs / 3600),
                     static_cast<int>(secs % 3600 / 60),    static_cast<int>(secs % 60)};
}

Instant startOfDay(Instant t) {
    double unix = unixFromInstant(t);
    return instantFromUnix(std::floor(unix / 86400.0) * 86400.0);
}

std::string monthKey(Instant t) {
    CivilTime c = civil(t);
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04d-%02d", c.year, c.month);
    return buf;
}

}  // namespace kinfolio::Importer
