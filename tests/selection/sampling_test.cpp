#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "model/calendar.h"
#include "selection/items.h"
#include "selection/selection.h"

namespace kinfolio {
namespace {

using namespace testing;
using Selection::IdSet;

IdSet idsAt(const std::string& fileID, std::initializer_list<int64_t> positions) {
    IdSet result;
    for (auto p : positions)
        result.insert(fileID + ":" + std::to_string(p));
    return result;
}

TEST(Sample, TakesEvenlySpacedIndicesRoundingHalvesAwayFromZero) {
    auto month = dailyMessages("f", 10, 2025, 3);
    EXPECT_EQ(Selection::sample(refs(month), 4), idsAt("f", {0, 3, 6, 9}));
    EXPECT_EQ(Selection::sample(refs(month), 3), idsAt("f", {0, 5, 9}));  // 4.5 becomes 5
    EXPECT_EQ(Selection::sample(refs(month), 2), idsAt("f", {0, 9}));
    EXPECT_EQ(Selection::sample(refs(month), 1), idsAt("f", {0}));
    EXPECT_EQ(Selection::sample(refs(month), 9),
              idsAt("f", {0, 1, 2, 3, 5, 6, 7, 8, 9}));  // 4.5 again
}

TEST(Sample, TakesEverythingWhenTheMonthIsSmallAndNothingBelowOne) {
    auto month = dailyMessages("f", 3, 2025, 3);
    EXPECT_EQ(Selection::sample(refs(month), 5), idsAt("f", {0, 1, 2}));
    EXPECT_EQ(Selection::sample(refs(month), 3), idsAt("f", {0, 1, 2}));
    EXPECT_TRUE(Selection::sample(refs(month), 0).empty());
    EXPECT_TRUE(Selection::sample(refs(month), -2).empty());
    EXPECT_TRUE(Selection::sample({}, 5).empty());
}

TEST(Sample, SamplesEveryCalendarMonthByItself) {
    auto items = dailyMessages("f", 10, 2025, 1, 1, 0);
    auto february = dailyMessages("f", 3, 2025, 2, 1, 10);
    items.insert(items.end(), february.begin(), february.end());
    EXPECT_EQ(Selection::sample(refs(items), 2), idsAt("f", {0, 9, 10, 12}));
}

TEST(Sample, MonthsAreTheWrittenOnesWithoutAnyZoneShift) {
    std::vector<Evidence> items = {
        message("f", 0, at(2025, 1, 31, 23, 59, 59)),
        message("f", 1, at(2025, 2, 1, 0, 0, 0)),
        message("f", 2, at(2025, 2, 28, 23, 59, 59)),
    };
    EXPECT_EQ(Selection::sample(refs(items), 1), idsAt("f", {0, 1}));
}

TEST(Sample, OrdersEachMonthByDateThenPositionWhateverTheInputOrder) {
    Instant noon = at(2025, 5, 10);
    std::vector<Evidence> items = {
        message("f", 7, noon + 60), message("f", 9, noon),       message("f", 3, noon + 3600),
        message("f", 8, noon),      message("f", 1, noon + 120),
    };
    // By date and position: 8, 9, 7, 1, 3.
    EXPECT_EQ(Selection::sample(refs(items), 3), idsAt("f", {8, 7, 3}));
    EXPECT_EQ(Selection::sample(refs(items), 1), idsAt("f", {8}));
}

TEST(Sample, MonthsBeforeTheEpochsGroupCorrectly) {
    std::vector<Evidence> items = {
        message("f", 0, at(1969, 12, 31, 23, 59, 59)),
        message("f", 1, at(1969, 12, 1, 0, 0, 0)),
        message("f", 2, at(1970, 1, 1, 0, 0, 0)),
    };
    EXPECT_EQ(Selection::sample(refs(items), 1), idsAt("f", {1, 2}));
}

TEST(MonthIndex, GroupsAndOrdersExactlyAsTheFormattedMonthKey) {
    std::vector<Instant> dates;
    for (int year : {1899, 1969, 1970, 2000, 2001, 2024, 2025, 2100})
        for (int month = 1; month <= 12; ++month) {
            Instant first = at(year, month, 1, 0, 0, 0);
            dates.insert(dates.end(), {first, first - 1, first - 0.001, first + 0.5});
        }
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> anyTime(-3.2e9, 3.2e9);
    for (int i = 0; i < 20000; ++i)
        dates.push_back(anyTime(random));
    for (Instant t : dates) {
        int m = Selection::monthIndex(t);
        char key[16];
        std::snprintf(key, sizeof key, "%04d-%02d", m / 12, m % 12 + 1);
        ASSERT_EQ(key, Calendar::monthKey(t)) << "at " << t;
        ASSERT_EQ(key, Calendar::format(t, "yyyy-MM")) << "at " << t;
    }
}

TEST(WithContext, AddsTheItemJustBeforeAndAfterInTheFile) {
    auto items = dailyMessages("f", 10, 2025, 3);
    EXPECT_EQ(Selection::withContext(idsAt("f", {4}), refs(items)), idsAt("f", {3, 4, 5}));
    EXPECT_EQ(Selection::withContext(idsAt("f", {2, 6}), refs(items)),
              idsAt("f", {1, 2, 3, 5, 6, 7}));
    EXPECT_TRUE(Selection::withContext({}, refs(items)).empty());
}

TEST(WithContext, FirstAndLastLinesOfAFileGetOneNeighbour) {
    auto items = dailyMessages("f", 5, 2025, 3);
    EXPECT_EQ(Selection::withContext(idsAt("f", {0}), refs(items)), idsAt("f", {0, 1}));
    EXPECT_EQ(Selection::withContext(idsAt("f", {4}), refs(items)), idsAt("f", {3, 4}));
}

TEST(WithContext, NeighboursOfNeighboursAreNotAdded) {
    auto items = dailyMessages("f", 9, 2025, 3);
    IdSet once = Selection::withContext(idsAt("f", {4}), refs(items));
    EXPECT_EQ(once, idsAt("f", {3, 4, 5}));
    EXPECT_EQ(Selection::withContext(once, refs(items)), idsAt("f", {2, 3, 4, 5, 6}));
}

TEST(WithContext, NeighboursCrossMonthBordersButNeverFiles) {
    std::vector<Evidence> items = {
        message("a", 1, at(2025, 1, 31)), message("a", 2, at(2025, 2, 1)),
        message("a", 3, at(2025, 3, 1)),  message("b", 1, at(2025, 1, 31)),
        message("b", 3, at(2025, 2, 2)),
    };
    EXPECT_EQ(Selection::withContext(idsAt("a", {2}), refs(items)), idsAt("a", {1, 2, 3}));
    // b:1's successor in its file is b:3, two positions on; a's lines are no kin.
    EXPECT_EQ(Selection::withContext({"b:1"}, refs(items)), (IdSet{"b:1", "b:3"}));
}

TEST(WithContext, NeighboursFollowPositionsNotDates) {
    std::vector<Evidence> items = {
        message("f", 30, at(2025, 1, 1)),
        message("f", 10, at(2025, 3, 1)),
        message("f", 20, at(2025, 2, 1)),
    };
    EXPECT_EQ(Selection::withContext({"f:10"}, refs(items)), (IdSet{"f:10", "f:20"}));
    EXPECT_EQ(Selection::withContext({"f:30"}, refs(items)), (IdSet{"f:20", "f:30"}));
}

TEST(WithContext, KeepsGivenIdsThatNameNoItem) {
    auto items = dailyMessages("f", 3, 2025, 3);
    EXPECT_EQ(Selection::withContext({"gone:5", "f:0"}, refs(items)),
              (IdSet{"f:0", "f:1", "gone:5"}));
}

TEST(WithContext, ItemsSharingAnIdAreChosenTogether) {
    // Two items of one line (a message and its attachment) share an id.
    std::vector<Evidence> items = dailyMessages("f", 5, 2025, 3);
    items.push_back(message("f", 2, at(2025, 3, 3)));
    EXPECT_EQ(Selection::withContext(idsAt("f", {2}), refs(items)), idsAt("f", {1, 2, 3}));
}

}  // namespace
}  // namespace kinfolio
