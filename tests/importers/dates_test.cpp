#include "importers/dates.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

#include <algorithm>
#include <cmath>

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

std::string written(std::optional<Instant> t) {
    return t ? format(*t, "yyyy-MM-dd HH:mm:ss") : "none";
}

TEST(Date, ReadsEveryIsoForm) {
    EXPECT_EQ(written(date("2025-05-03T20:00:00", DateOrder::automatic)), "2025-05-03 20:00:00");
    EXPECT_EQ(written(date("2025-05-03T20:07", DateOrder::automatic)), "2025-05-03 20:07:00");
    EXPECT_EQ(written(date("2025-05-03 20:00:09", DateOrder::monthFirst)), "2025-05-03 20:00:09");
    EXPECT_EQ(written(date("2025-05-03", DateOrder::dayFirst)), "2025-05-03 00:00:00");
    // The form camera metadata uses.
    EXPECT_EQ(written(date("2025:06:14 10:00:00", DateOrder::dayFirst)), "2025-06-14 10:00:00");
}

TEST(Date, RefusesTimestampsThatCarryTheirOwnZone) {
    for (const char* text :
         {"2025-05-03T20:00:00Z", "2025-05-03T20:00:00+02:00", "2025-05-03 20:00:00 +0200",
          "2025-05-03T20:00:00z", "2025-05-03T20:00:00-0500"})
        EXPECT_EQ(date(text, DateOrder::automatic), std::nullopt) << text;
}

TEST(Date, DayOrderDecidesAmbiguousDates) {
    EXPECT_EQ(written(date("5/1/2025 09:00", DateOrder::dayFirst)), "2025-01-05 09:00:00");
    EXPECT_EQ(written(date("5/1/2025 09:00", DateOrder::automatic)), "2025-01-05 09:00:00");
    EXPECT_EQ(written(date("5/1/2025 09:00", DateOrder::monthFirst)), "2025-05-01 09:00:00");
    EXPECT_EQ(date("13/1/2025 09:00", DateOrder::monthFirst), std::nullopt);
}

TEST(Date, TwoDigitYearsUseTheShortPatternsNotYearTwentyFive) {
    EXPECT_EQ(written(date("1/2/25 9:05 PM", DateOrder::dayFirst)), "2025-02-01 21:05:00");
    EXPECT_EQ(written(date("1/2/25 9:05 PM", DateOrder::monthFirst)), "2025-01-02 21:05:00");
    EXPECT_EQ(written(date("05.01.25 09:00:30", DateOrder::dayFirst)), "2025-01-05 09:00:30");
}

TEST(Date, NormalisesNarrowNoBreakSpaceAndIgnoresLeftToRightMarks) {
    EXPECT_EQ(date("1/2/25 9:05\u202FPM", DateOrder::dayFirst),
              date("1/2/25 9:05 PM", DateOrder::dayFirst));
    EXPECT_EQ(written(date("\u200E1/2/25 9:\u200E05 PM", DateOrder::dayFirst)),
              "2025-02-01 21:05:00");
    EXPECT_EQ(written(date("  2025-05-03 \n", DateOrder::dayFirst)), "2025-05-03 00:00:00");
}

TEST(Date, ReadsDottedAndDashedDayFirstForms) {
    EXPECT_EQ(written(date("14.06.2025 09:15", DateOrder::dayFirst)), "2025-06-14 09:15:00");
    EXPECT_EQ(written(date("14-06-2025 09:15", DateOrder::dayFirst)), "2025-06-14 09:15:00");
    EXPECT_EQ(written(date("06-14-2025 09:15", DateOrder::monthFirst)), "2025-06-14 09:15:00");
    // The month-first list has no dotted patterns.
    EXPECT_EQ(date("06.14.2025 09:15", DateOrder::monthFirst), std::nullopt);
}

TEST(Date, RefusesWhatNoPatternReadsWhole) {
    for (const char* text : {"", "yesterday", "2025-02-30", "31/02/2025 10:00", "5/1/2025 9",
                             "5/1/2025 09:00 tomorrow", "2025-05-03T20:00:00.123"})
        EXPECT_EQ(date(text, DateOrder::dayFirst), std::nullopt) << text;
}

TEST(DetectOrder, NeedsOneDecidingLineAndNoContradiction) {
    EXPECT_EQ(detectOrder("05/01/2025, 09:00 - A: hi\n05/01/2025, 09:01 - B: hey\n"), std::nullopt);
    EXPECT_EQ(detectOrder("[05/01/2025, 09:00:00] A: hi\n[14/01/2025, 09:00:00] B: x\n"),
              DateOrder::dayFirst);
    EXPECT_EQ(detectOrder("01/14/2025, 09:00 - A: hi\n"), DateOrder::monthFirst);
    EXPECT_EQ(detectOrder("14/01/2025, 09:00 - A: hi\n01/14/2025, 09:00 - B: hi\n"), std::nullopt);
    EXPECT_EQ(detectOrder("no dates here"), std::nullopt);
    // A date not at the start of a line says nothing.
    EXPECT_EQ(detectOrder("A: see you on 14/01/2025\n"), std::nullopt);
}

TEST(Duration, WritesSecondsMinutesAndHours) {
    EXPECT_EQ(duration(45), "45 s");
    EXPECT_EQ(duration(59.4), "59 s");
    EXPECT_EQ(duration(59.5), "1 min");
    EXPECT_EQ(duration(720), "12 min");
    EXPECT_EQ(duration(725), "12 min 5 s");
    EXPECT_EQ(duration(125), "2 min 5 s");
    EXPECT_EQ(duration(3600), "1 h 0 min");
    EXPECT_EQ(duration(3930), "1 h 5 min");
    EXPECT_EQ(duration(0), "0 s");
}

TEST(Duration, LengthsReadFromBrokenFilesStayReadable) {
    EXPECT_EQ(duration(-5), "0 s");
    EXPECT_EQ(duration(std::nan("")), "0 s");
    std::string huge = duration(1e300);  // a call notice with a run of 300 digits
    EXPECT_NE(huge.front(), '-') << huge;
    EXPECT_TRUE(huge.ends_with(" min")) << huge;
}

TEST(CommonTimeZones, SortedWithoutDuplicatesAndHoldingTheMachineZone) {
    const auto& zones = commonTimeZones();
    EXPECT_TRUE(std::is_sorted(zones.begin(), zones.end()));
    EXPECT_EQ(std::adjacent_find(zones.begin(), zones.end()), zones.end());
    EXPECT_NE(std::find(zones.begin(), zones.end(), currentTimeZoneID()), zones.end());
    EXPECT_NE(std::find(zones.begin(), zones.end(), "Pacific/Auckland"), zones.end());
    bool fixed = zones.size() == 23;
    EXPECT_TRUE(fixed || zones.size() == 24);
}

TEST(Calendar, MakeDateRefusesImpossibleDays) {
    EXPECT_TRUE(makeDate(2024, 2, 29).has_value());
    EXPECT_FALSE(makeDate(2025, 2, 29).has_value());
    EXPECT_FALSE(makeDate(2025, 13, 1).has_value());
    EXPECT_FALSE(makeDate(2025, 0, 1).has_value());
    auto t = makeDate(2025, 6, 14, 9, 15, 30);
    EXPECT_EQ(written(t), "2025-06-14 09:15:30");
    EXPECT_EQ(monthKey(*t), "2025-06");
    EXPECT_EQ(written(startOfDay(*t)), "2025-06-14 00:00:00");
    auto c = civil(*t);
    EXPECT_EQ((std::array<int, 6>{c.year, c.month, c.day, c.hour, c.minute, c.second}),
              (std::array<int, 6>{2025, 6, 14, 9, 15, 30}));
}

TEST(Calendar, InstantsFarOutsideAnyCalendarStayDefined) {
    for (double t : {1e300, -1e300, HUGE_VAL, std::nan("")}) {
        auto c = civil(t);
        EXPECT_TRUE(c.month >= 1 && c.month <= 12) << t;
        EXPECT_TRUE(c.day >= 1 && c.day <= 31) << t;
        EXPECT_TRUE(c.hour >= 0 && c.hour <= 23) << t;
        EXPECT_LT(std::abs(c.year), 40000) << t;
    }
}

TEST(Calendar, InstantsBeforeTheReferenceEpochKeepTheirDay) {
    auto t = makeDate(1999, 12, 31, 23, 59, 59);
    EXPECT_LT(*t, 0);
    EXPECT_EQ(monthKey(*t), "1999-12");
    EXPECT_EQ(written(startOfDay(*t)), "1999-12-31 00:00:00");
}

TEST(Format, WritesInTheZeroOffsetZoneWithEnglishNames) {
    auto t = *makeDate(2025, 1, 5, 21, 4);
    EXPECT_EQ(format(t, "MMM yyyy"), "Jan 2025");
    EXPECT_EQ(format(t, "EEEE, MMMM d, yyyy"), "Sunday, January 5, 2025");
    EXPECT_EQ(format(t, "h:mm a"), "9:04 PM");
}

}  // namespace
}  // namespace kinfolio::Importer
