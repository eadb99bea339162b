#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/calendar.h"
#include "model/evidence.h"
#include "model/settings.h"

// The shared rules for written timestamps. A time is kept exactly as the
// source wrote it: read as a wall-clock time in a fixed zero-offset zone and
// formatted in that same zone, so the digits come back unchanged.
namespace kinfolio::Importer {

// Reads one written timestamp with the ISO patterns and then the day-first or
// month-first list; none when no pattern reads the whole text, or when the
// text carries its own zone.
std::optional<Instant> date(std::string_view text, DateOrder order);

// dayFirst or monthFirst when the numbers of a chat's dates tell; none otherwise.
std::optional<DateOrder> detectOrder(std::string_view text);

}  // namespace kinfolio::Importer
