#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "model/evidence.h"
#include "model/settings.h"

// Dates written in running English text, as on the first page of a ticket,
// a bank statement or a certificate: "12 April 2025", "April 12th, 2025",
// "12/04/2025", "2025-04-12T14:30", "12APR25". The text is scanned by hand
// rather than with regular expressions: every attempt reads a bounded number
// of characters, so the whole scan is linear even on hostile text, and the
// ranges come out as UTF-8 byte offsets without converting to UTF-16.
namespace kinfolio::Importer {

// A date expression found in running text.
struct TextDate {
    size_t begin = 0, length = 0;  // byte range in the UTF-8 text
    Instant date = 0;              // wall-clock reading in the zero-offset zone
    bool hasTime = false;          // a time of day was written with it
};

// Every date expression of the text, in text order, that names a whole day
// (day, month and year). Numeric dates whose day and month could be swapped
// follow `order`.
//
// A two-digit year counts ("12 Apr 25", "12/04/25" read as 2025; 50 to 99
// as 1950 to 1999); a caller that wants certainty looks for four digits in
// the matched text. Four-digit years outside 1900 to 2099 are taken for
// reference numbers. Eight digits run together ("20250412") are a booking
// reference or an order number far more often than a date, so they are not
// read. A range ("12–15 April 2025", "April 12–15, 2025") gives both of its
// days, each with the range of the whole expression, the first day first.
// A time written after a single date ("12/04/2025 14:30", "… at 2:30 PM",
// "2025-04-12T14:30:00") belongs to it and widens its range; a zone written
// after the time is left out of the range and not applied. The parts of one
// date stay on one line, at most three blanks apart.
std::vector<TextDate> findDates(std::string_view text, DateOrder order);

// The number of an English month name or its abbreviation, in any case
// ("March", "mar", "Sept"); 0 for any other word.
int monthNumber(std::string_view word);

}  // namespace kinfolio::Importer
