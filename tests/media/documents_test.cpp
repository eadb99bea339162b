#include "media/documents.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio::Scanner {
namespace {

std::string day(std::optional<Instant> t) {
    return t ? Calendar::format(*t, "yyyy-MM-dd HH:mm") : "none";
}

TEST(DocumentFirstDate, TheFirstDateWithAFullYear) {
    struct Case {
        const char* text;
        DateOrder order;
        const char* expected;
    } cases[] = {
        {"Issued: 3 March 2025\nDeparture 12 April 2025", DateOrder::automatic, "2025-03-03 00:00"},
        {"Boarding Friday 14:30, gate closes 20 minutes before", DateOrder::automatic, "none"},
        // A two-digit year is passed over for the next date that has four.
        {"Printed 01/02/25. Statement date 28 February 2025", DateOrder::automatic,
         "2025-02-28 00:00"},
        {"Valid from 03/04/2025", DateOrder::dayFirst, "2025-04-03 00:00"},
        {"Valid from 03/04/2025", DateOrder::monthFirst, "2025-03-04 00:00"},
        {"Check-in 2025-06-14 15:00", DateOrder::automatic, "2025-06-14 15:00"},
        {"", DateOrder::automatic, "none"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(day(firstDate(c.text, c.order)), c.expected) << c.text;
}

}  // namespace
}  // namespace kinfolio::Scanner
