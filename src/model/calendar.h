#pragma once

#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"

// Civil dates in the fixed zero-offset zone. Every written time is kept as
// the wall-clock time its source wrote, so reading and formatting it here
// gives back exactly the digits that were written.
namespace kinfolio::Calendar {

// The fixed zone of offset zero used for every written time.
const icu::TimeZone& zone();

// A new formatter: locale en_US_POSIX, the zero-offset zone, strict parsing.
std::unique_ptr<icu::SimpleDateFormat> formatter(std::string_view pattern);
// Formats in the zero-offset zone, as ICU does in en_US_POSIX: the usual
// fields (years, months and weekdays in English, days, hours, minutes,
// seconds, AM/PM) by civil-date arithmetic, anything else with a per-thread
// cached ICU formatter.
std::string format(Instant t, std::string_view pattern);
// Always with ICU: the reference the arithmetic is held to.
std::string formatWithICU(Instant t, std::string_view pattern);
// Parses the whole text with a per-thread cached formatter; none on failure.
// A "yyyy" pattern refuses a year written with fewer than four digits.
std::optional<Instant> parse(std::string_view text, std::string_view pattern);
// The same for text already in ICU form, read against several patterns.
std::optional<Instant> parseUnicode(const icu::UnicodeString& text, std::string_view pattern);
// A day written "yyyy-MM-dd".
std::optional<Instant> isoDay(std::string_view text);

// A call's length: "45 s", "12 min 5 s", "1 h 0 min".
std::string duration(double seconds);

// Sorted zone identifiers offered by the time-zone setting.
const std::vector<std::string>& commonTimeZones();
// Whether ICU knows the zone ("Europe/London", "UTC", "Asia/Kolkata").
bool isKnownTimeZone(std::string_view id);

struct CivilTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};
// None for an impossible date (30 February, month 13); hour, minute and
// second may run over and carry into the next unit.
std::optional<Instant> makeDate(int year, int month, int day, int hour = 0, int minute = 0,
                                int second = 0);
CivilTime civil(Instant t);
// The first year of the hundred in which a two-digit year is placed: as ICU
// does for "yy", the hundred years starting 80 years before today.
int centuryStartYear();
// A two-digit year placed in that hundred ("23" is 2023).
int fullYear(int twoDigits);
Instant startOfDay(Instant t);
// "yyyy-MM"
std::string monthKey(Instant t);

}  // namespace kinfolio::Calendar
