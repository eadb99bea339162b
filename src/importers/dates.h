#pragma once

#include <unicode/smpdtfmt.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"
#include "model/settings.h"

// The shared rules for written timestamps. A time is kept exactly as the
// source wrote it: read as a wall-clock time in a fixed zero-offset zone and
// formatted in that same zone, so the digits come back unchanged.
namespace kinfolio::Importer {

// The fixed zone of offset zero used for every written time.
const icu::TimeZone& zone();

// Reads one written timestamp with the ISO patterns and then the day-first or
// month-first list; none when no pattern reads the whole text, or when the
// text carries its own zone.
std::optional<Instant> date(std::string_view text, DateOrder order);

// A new formatter: locale en_US_POSIX, the zero-offset zone, strict parsing.
std::unique_ptr<icu::SimpleDateFormat> formatter(std::string_view pattern);
// Formats with a per-thread cached formatter of that pattern.
std::string format(Instant t, std::string_view pattern);
// Parses the whole text with a per-thread cached formatter; none on failure.
std::optional<Instant> parse(std::string_view text, std::string_view pattern);

// dayFirst or monthFirst when the numbers of a chat's dates tell; none otherwise.
std::optional<DateOrder> detectOrder(std::string_view text);

// A call's length: "45 s", "12 min 5 s", "1 h 0 min".
std::string duration(double seconds);

// Sorted zone identifiers offered by the time-zone setting.
const std::vector<std::string>& commonTimeZones();

// Gregorian calendar arithmetic in the zero-offset zone.
struct CivilTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};
// None for an impossible date (30 February, month 13); hour, minute and
// second may run over and carry into the next unit.
std::optional<Instant> makeDate(int year, int month, int day, int hour = 0, int minute = 0,
                                int second = 0);
CivilTime civil(Instant t);
Instant startOfDay(Instant t);
// "yyyy-MM"
std::string monthKey(Instant t);

}  // namespace kinfolio::Importer
