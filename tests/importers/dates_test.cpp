#include "importers/dates.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio::Importer {
namespace {

constexpr auto A = DateOrder::automatic;
constexpr auto D = DateOrder::dayFirst;
constexpr auto M = DateOrder::monthFirst;

// The common fixed-width layouts are read without ICU; their rows hold that
// reading to what the pattern lists give.
TEST(Date, ReadsWrittenTimestampsAsWritten) {
    const std::tuple<const char*, DateOrder, const char*> cases[] = {
        {"2025-05-03T20:00:00", A, "2025-05-03 20:00:00"},
        {"2025-05-03T20:07", A, "2025-05-03 20:07:00"},
        {"2025-05-03 20:00:09", M, "2025-05-03 20:00:09"},
        {"2025-06-14 09:15", A, "2025-06-14 09:15:00"},
        {"2024-02-29 23:59:59", M, "2024-02-29 23:59:59"},
        {"2025-05-03", D, "2025-05-03 00:00:00"},
        {"2025-06-14T00:00:01", D, "2025-06-14 00:00:01"},
        {"2025:06:14 10:00:00", D, "2025-06-14 10:00:00"},  // as camera metadata writes it
        {"14/06/2025 09:15", D, "2025-06-14 09:15:00"},
        {"12/31/1999 23:00:00", M, "1999-12-31 23:00:00"},
        {"14.06.2025 09:15", D, "2025-06-14 09:15:00"},
        {"14-06-2025 09:15", D, "2025-06-14 09:15:00"},
        {"06-14-2025 09:15", M, "2025-06-14 09:15:00"},
        // The order decides ambiguous dates; automatic reads day first.
        {"05/01/2025 09:15:30", A, "2025-01-05 09:15:30"},
        {"05/01/2025 09:15", M, "2025-05-01 09:15:00"},
        {"5/1/2025 09:00", D, "2025-01-05 09:00:00"},
        {"5/1/2025 09:00", M, "2025-05-01 09:00:00"},
        // Two-digit years use the short patterns, not the year 25.
        {"1/2/25 9:05 PM", D, "2025-02-01 21:05:00"},
        {"1/2/25 9:05 PM", M, "2025-01-02 21:05:00"},
        {"05.01.25 09:00:30", D, "2025-01-05 09:00:30"},
        // A narrow no-break space is a space; left-to-right marks and the
        // white space around the text are ignored.
        {"1/2/25 9:05\u202FPM", D, "2025-02-01 21:05:00"},
        {"\u200E1/2/25 9:\u200E05 PM", D, "2025-02-01 21:05:00"},
        {"  2025-05-03 \n", D, "2025-05-03 00:00:00"},
        {" 2025-06-14 09:15:00\n", D, "2025-06-14 09:15:00"},
        {"5/1/2025 9:05 PM", D, "2025-01-05 21:05:00"},
        // A timestamp that carries its own zone is no written time.
        {"2025-05-03T20:00:00Z", A, "none"},
        {"2025-05-03T20:00:00z", A, "none"},
        {"2025-05-03T20:00:00+02:00", A, "none"},
        {"2025-05-03 20:00:00 +0200", A, "none"},
        {"2025-05-03T20:00:00-0500", A, "none"},
        {"2025-06-14Z", D, "none"},
        // What no pattern reads whole, or no calendar has.
        {"", D, "none"},
        {"yesterday", D, "none"},
        {"13/1/2025 09:00", M, "none"},
        {"14/06/2025 09:15", M, "none"},
        {"06.14.2025 09:15", M, "none"},  // the month-first list has no dotted patterns
        {"2025-02-30", D, "none"},
        {"2025-02-29 10:00:00", D, "none"},
        {"31/02/2025 10:00", D, "none"},
        {"31/06/2025 09:00", D, "none"},
        {"2025-13-01 10:00", D, "none"},
        {"2025-06-14 24:00", D, "none"},
        {"2025-06-14 10:60", D, "none"},
        {"2025-06-14 10:00:60", D, "none"},
        {"0999-06-14", D, "none"},
        {"2025-06-1x", D, "none"},
        {"14/06/2025 09:15:0", D, "none"},
        {"5/1/2025 9", D, "none"},
        {"5/1/2025 09:00 tomorrow", D, "none"},
        {"2025-05-03T20:00:00.123", D, "none"},
    };
    for (const auto& [text, order, written] : cases) {
        auto t = date(text, order);
        EXPECT_EQ(t ? Calendar::format(*t, "yyyy-MM-dd HH:mm:ss") : "none", written) << text;
    }
}

}  // namespace
}  // namespace kinfolio::Importer
