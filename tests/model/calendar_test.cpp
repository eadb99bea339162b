#include "model/calendar.h"

#include <gtest/gtest.h>

#include <cmath>

#include "model/settings.h"

namespace kinfolio::Calendar {
namespace {

// Every field the arithmetic writes, in every width the layout and the
// command line use, against ICU over forty years. The date fields depend on
// the day alone and the time fields on the minute of the day alone, so every
// day is checked, each at another minute (cycling through all 1,440), and
// every minute of the day is checked too: together that is every minute of
// the forty years, at a hundredth of the cost of asking ICU 21 million times.
TEST(CalendarFormat, EqualsICUOnEveryDayAndEveryMinuteOfFortyYears) {
    const char* pattern = "EEEE EEE yyyy yy y MMMM MMM MM M dd d HH H hh h mm m ss s a 'at' ''";
    int mismatches = 0;
    auto check = [&](Instant t) {
        std::string fast = format(t, pattern), reference = formatWithICU(t, pattern);
        if (fast != reference && ++mismatches <= 5) ADD_FAILURE() << fast << " != " << reference;
    };
    Instant first = *makeDate(1995, 1, 1), end = *makeDate(2035, 1, 1);
    int day = 0;
    for (Instant t = first; t < end; t += 86400, ++day)
        check(t + (day * 60 % 86400) + day % 60);
    for (int minute = 0; minute < 1440; ++minute)
        check(*makeDate(2024, 2, 29) + minute * 60 + minute % 60);
    EXPECT_EQ(mismatches, 0);
}

TEST(CalendarFormat, OtherPatternsAndYearsAreLeftToICU) {
    for (Instant t : {*makeDate(1582, 10, 4, 12), *makeDate(1, 1, 1), *makeDate(2025, 6, 14, 9, 5)})
        for (const char* pattern : {"yyyy-MM-dd HH:mm:ss", "G yyyy QQQ", "D w", "EEEEE MMMMM"})
            EXPECT_EQ(format(t, pattern), formatWithICU(t, pattern)) << pattern;
}

TEST(Duration, WritesSecondsMinutesAndHours) {
    // Lengths read from broken files, negative or not a number, stay readable.
    const std::pair<double, const char*> cases[] = {
        {45, "45 s"},        {59.4, "59 s"},     {59.5, "1 min"},       {720, "12 min"},
        {725, "12 min 5 s"}, {125, "2 min 5 s"}, {3600, "1 h 0 min"},   {3930, "1 h 5 min"},
        {0, "0 s"},          {-5, "0 s"},        {std::nan(""), "0 s"},
    };
    for (const auto& [seconds, written] : cases)
        EXPECT_EQ(duration(seconds), written) << seconds;
    std::string huge = duration(1e300);  // a call notice with a run of 300 digits
    EXPECT_NE(huge.front(), '-') << huge;
    EXPECT_TRUE(huge.ends_with(" min")) << huge;
}

}  // namespace
}  // namespace kinfolio::Calendar
