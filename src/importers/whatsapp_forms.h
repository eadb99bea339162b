#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"
#include "model/settings.h"

// The timestamps that phones in other languages write into a WhatsApp
// export, beyond the day/month/year layouts that the shared date lists read:
// years first, dotted times, the words for AM and PM of many languages,
// digits of other scripts. They are tried only where those lists read
// nothing, so every timestamp the lists read keeps its reading.
namespace kinfolio::Importer {

// One layout of a timestamp, written in a small pattern language:
//   yyyy  a four-digit year       yy  a two-digit year     y  either
//   d M   day and month of one or two digits; where the day comes first,
//         the chat's date order decides which of the two is the day
//   H     hour 0-23              h   hour 1-12 (with a)    mm  minutes
//   a     the word for AM or PM of any language, spaces around it optional
//   ,     an optional comma (also the Arabic and the full-width one)
//   ' '   a space (also a no-break or narrow no-break one)
//   'x'   literal text; any other character stands for itself
// Seconds may follow the minutes with the same separator as the minutes.
struct WhatsAppForm {
    std::string_view name;     // who writes it
    std::string_view pattern;  // as above
    std::string_view example;  // a timestamp in this form, as written
};

// The forms, in the order they are tried.
const std::vector<WhatsAppForm>& whatsappForms();

// The instant of a timestamp written in one of the forms; none when no form
// reads the whole of it.
std::optional<Instant> formTimestamp(std::string_view stamp, DateOrder order);
// The index of the form that reads the stamp, for tests of the table.
std::optional<size_t> formOf(std::string_view stamp, DateOrder order);

// A message line whose timestamp is in one of the forms: "[stamp] rest" as
// iPhones write it, or "stamp - rest" as Android phones do.
struct FormLine {
    Instant date;
    std::string rest;  // sender and text
};
std::optional<FormLine> formLine(std::string_view line, DateOrder order);
// Whether the line is such a message line under either date order.
bool isFormLine(std::string_view line);

}  // namespace kinfolio::Importer
