#include "model/calendar.h"

#include <unicode/simpletz.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <set>

#include "model/settings.h"
#include "model/text.h"

namespace kinfolio::Calendar {

namespace {

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

namespace {

// A date pattern split into its fields ("yyyy", "MMM", "h") and literal text.
struct PatternPart {
    char letter = 0;  // 0 for literal text
    int count = 0;
    std::string literal;
};

// The parts of a pattern whose every field the civil arithmetic below can
// write as ICU writes it in en_US_POSIX; none for any other pattern.
std::optional<std::vector<PatternPart>> compile(std::string_view pattern) {
    std::vector<PatternPart> parts;
    auto literal = [&](std::string_view text) {
        if (parts.empty() || parts.back().letter) parts.push_back({});
        parts.back().literal += text;
    };
    for (size_t i = 0; i < pattern.size();) {
        char c = pattern[i];
        if (c == '\'') {
            size_t close = pattern.find('\'', i + 1);
            if (close == std::string_view::npos) return std::nullopt;
            literal(close == i + 1 ? "'" : pattern.substr(i + 1, close - i - 1));
            i = close + 1;
        } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
            if (std::string_view("yMdEHhmsa").find(c) == std::string_view::npos)
                return std::nullopt;
            size_t end = pattern.find_first_not_of(c, i);
            if (end == std::string_view::npos) end = pattern.size();
            parts.push_back({c, static_cast<int>(end - i), {}});
            i = end;
        } else {
            literal(pattern.substr(i, 1));
            ++i;
        }
    }
    return parts;
}

constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
constexpr std::array<const char*, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

void appendNumber(std::string& out, long long value, int width) {
    char digits[24];
    if (value < 0) {
        int n = std::snprintf(digits, sizeof digits, "%0*lld", width, value);
        out.append(digits, static_cast<size_t>(n));
        return;
    }
    // Called for every date of a large chat: without printf's parsing.
    auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    auto length = static_cast<int>(end - digits);
    if (length < width) out.append(static_cast<size_t>(width - length), '0');
    out.append(digits, end);
}

// A name in ICU's widths: 1-3 letters abbreviated, 4 whole, 5 the first
// letter, 6 (weekdays) the first two.
void appendName(std::string& out, std::string_view name, int count) {
    if (count == 4)
        out += name;
    else if (count == 5)
        out += name.substr(0, 1);
    else if (count == 6)
        out += name.substr(0, 2);
    else
        out += name.substr(0, 3);
}

// Written times are wall-clock values in a zone of offset zero, so formatting
// is arithmetic on the civil date: no ICU formatter, no locale lookups. ICU
// counts years before the Gregorian reform in the Julian calendar and writes
// years past 9999 its own way; those are left to it.
std::optional<std::string> formatCivil(Instant t, const std::vector<PatternPart>& parts) {
    CivilTime c = civil(t);
    if (c.year < 1600 || c.year > 9999) return std::nullopt;
    double unix = std::floor(unixFromInstant(t));
    auto days = static_cast<long long>(std::floor(unix / 86400.0));
    int weekday = static_cast<int>(((days + 4) % 7 + 7) % 7);  // 1970-01-01 was a Thursday
    std::string out;
    for (const PatternPart& p : parts) {
        switch (p.letter) {
            case 0:
                out += p.literal;
                break;
            case 'y':
                p.count == 2 ? appendNumber(out, c.year % 100, 2)
                             : appendNumber(out, c.year, p.count);
                break;
            case 'M':
                if (p.count <= 2)
                    appendNumber(out, c.month, p.count);
                else
                    appendName(out, kMonths[static_cast<size_t>(c.month - 1)],
                               p.count == 6 ? 3 : p.count);
                break;
            case 'd':
                appendNumber(out, c.day, p.count);
                break;
            case 'E':
                appendName(out, kWeekdays[static_cast<size_t>(weekday)], p.count);
                break;
            case 'H':
                appendNumber(out, c.hour, p.count);
                break;
            case 'h':
                appendNumber(out, c.hour % 12 == 0 ? 12 : c.hour % 12, p.count);
                break;
            case 'm':
                appendNumber(out, c.minute, p.count);
                break;
            case 's':
                appendNumber(out, c.second, p.count);
                break;
            case 'a':
                out += c.hour < 12 ? "AM" : "PM";
                break;
        }
    }
    return out;
}

const std::optional<std::vector<PatternPart>>& compiled(std::string_view pattern) {
    thread_local std::map<std::string, std::optional<std::vector<PatternPart>>, std::less<>> cache;
    auto it = cache.find(pattern);
    if (it == cache.end()) it = cache.emplace(std::string(pattern), compile(pattern)).first;
    return it->second;
}

}  // namespace

std::string format(Instant t, std::string_view pattern) {
    if (const auto& parts = compiled(pattern))
        if (auto text = formatCivil(t, *parts)) return *text;
    return formatWithICU(t, pattern);
}

std::string formatWithICU(Instant t, std::string_view pattern) {
    icu::UnicodeString out;
    cached(pattern).format->format(instantToUDate(t), out);
    return toUtf8(out);
}

std::optional<Instant> parseUnicode(const icu::UnicodeString& text, std::string_view pattern) {
    CachedFormatter& f = cached(pattern);
    icu::ParsePosition pos(0);
    UDate d = f.format->parse(text, pos);
    if (pos.getErrorIndex() >= 0 || pos.getIndex() != text.length()) return std::nullopt;
    // ICU reads a two-digit year against "yyyy" as the year 25 AD; a
    // four-digit pattern must see four digits, so "1/2/25" falls through to
    // the "yy" patterns as intended.
    if (f.fourDigitYear && civil(udateToInstant(d)).year < 1000) return std::nullopt;
    return udateToInstant(d);
}

std::optional<Instant> parse(std::string_view text, std::string_view pattern) {
    return parseUnicode(toUnicode(text), pattern);
}

std::optional<Instant> isoDay(std::string_view text) {
    if (text.size() != 10) return std::nullopt;
    return parse(text, "yyyy-MM-dd");
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

bool isKnownTimeZone(std::string_view id) {
    if (id.empty()) return false;
    // An unknown id gives ICU's "Etc/Unknown" zone rather than an error.
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(toUnicode(id)));
    icu::UnicodeString found;
    return zone && zone->getID(found) != icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID);
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

int centuryStartYear() {
    static const int year = [] {
        std::time_t now = std::time(nullptr);
        std::tm utc{};
        gmtime_r(&now, &utc);
        return utc.tm_year + 1900 - 80;
    }();
    return year;
}

int fullYear(int twoDigits) {
    int start = centuryStartYear();
    int year = start / 100 * 100 + twoDigits;
    return year < start ? year + 100 : year;
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

}  // namespace kinfolio::Calendar
