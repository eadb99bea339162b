#include "model/calendar.h"

#include <unicode/simpletz.h>
#include <unicode/timezone.h>

#include <algorithm>
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

std::string format(Instant t, std::string_view pattern) {
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
