#include <gtest/gtest.h>

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

std::vector<Evidence> concat(std::vector<Evidence> a, const std::vector<Evidence>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Evenly spaced indices round halves away from zero; every calendar month,
// as written without any zone shift, is sampled by itself in date and
// position order, whatever order the items come in.
TEST(Sample, TakesEvenlySpacedItemsOfEveryMonth) {
    struct Case {
        const char* name;
        std::vector<Evidence> items;
        int perMonth;
        IdSet expected;
    };
    const Instant noon = at(2025, 5, 10);
    const auto ten = dailyMessages("f", 10, 2025, 3), three = dailyMessages("f", 3, 2025, 3);
    const Case cases[] = {
        {"four of ten", ten, 4, idsAt("f", {0, 3, 6, 9})},
        {"three of ten: 4.5 becomes 5", ten, 3, idsAt("f", {0, 5, 9})},
        {"two of ten", ten, 2, idsAt("f", {0, 9})},
        {"one of ten", ten, 1, idsAt("f", {0})},
        {"nine of ten: 4.5 again", ten, 9, idsAt("f", {0, 1, 2, 3, 5, 6, 7, 8, 9})},
        {"more than the month holds", three, 5, idsAt("f", {0, 1, 2})},
        {"exactly what the month holds", three, 3, idsAt("f", {0, 1, 2})},
        {"none", three, 0, {}},
        {"below none", three, -2, {}},
        {"no items", {}, 5, {}},
        {"each month by itself",
         concat(dailyMessages("f", 10, 2025, 1, 1, 0), dailyMessages("f", 3, 2025, 2, 1, 10)), 2,
         idsAt("f", {0, 9, 10, 12})},
        {"written months",
         {message("f", 0, at(2025, 1, 31, 23, 59, 59)), message("f", 1, at(2025, 2, 1, 0, 0, 0)),
          message("f", 2, at(2025, 2, 28, 23, 59, 59))},
         1,
         idsAt("f", {0, 1})},
        {"months before the epoch",
         {message("f", 0, at(1969, 12, 31, 23, 59, 59)), message("f", 1, at(1969, 12, 1, 0, 0, 0)),
          message("f", 2, at(1970, 1, 1, 0, 0, 0))},
         1,
         idsAt("f", {1, 2})},
        // By date and position: 8, 9, 7, 1, 3.
        {"date then position, three",
         {message("f", 7, noon + 60), message("f", 9, noon), message("f", 3, noon + 3600),
          message("f", 8, noon), message("f", 1, noon + 120)},
         3,
         idsAt("f", {8, 7, 3})},
        {"date then position, one",
         {message("f", 7, noon + 60), message("f", 9, noon), message("f", 8, noon)},
         1,
         idsAt("f", {8})},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Selection::sample(refs(c.items), c.perMonth), c.expected) << c.name;
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

// The items just before and after each chosen one in its file, by position
// (not date), across month borders but never across files; neighbours of
// neighbours are not added, and ids naming no item are kept.
TEST(WithContext, AddsTheNeighboursInTheFile) {
    struct Case {
        const char* name;
        std::vector<Evidence> items;
        IdSet chosen, expected;
    };
    const auto ten = dailyMessages("f", 10, 2025, 3);
    const std::vector<Evidence> twoFiles = {
        message("a", 1, at(2025, 1, 31)), message("a", 2, at(2025, 2, 1)),
        message("a", 3, at(2025, 3, 1)),  message("b", 1, at(2025, 1, 31)),
        message("b", 3, at(2025, 2, 2)),
    };
    const std::vector<Evidence> byPosition = {message("f", 30, at(2025, 1, 1)),
                                              message("f", 10, at(2025, 3, 1)),
                                              message("f", 20, at(2025, 2, 1))};
    const Case cases[] = {
        {"one", ten, idsAt("f", {4}), idsAt("f", {3, 4, 5})},
        {"two", ten, idsAt("f", {2, 6}), idsAt("f", {1, 2, 3, 5, 6, 7})},
        {"none", ten, {}, {}},
        {"first line", ten, idsAt("f", {0}), idsAt("f", {0, 1})},
        {"last line", ten, idsAt("f", {9}), idsAt("f", {8, 9})},
        {"neighbours of neighbours", ten, idsAt("f", {3, 4, 5}), idsAt("f", {2, 3, 4, 5, 6})},
        {"across months", twoFiles, idsAt("a", {2}), idsAt("a", {1, 2, 3})},
        // b:1's successor in its file is b:3, two positions on; a's lines are no kin.
        {"never across files", twoFiles, {"b:1"}, {"b:1", "b:3"}},
        {"never across files, forwards", twoFiles, {"a:3"}, {"a:2", "a:3"}},
        {"positions, not dates: first", byPosition, {"f:10"}, {"f:10", "f:20"}},
        {"positions, not dates: last", byPosition, {"f:30"}, {"f:20", "f:30"}},
        {"ids naming no item", ten, {"gone:5", "f:0"}, {"f:0", "f:1", "gone:5"}},
        // Two items of one line (a message and its attachment) share an id.
        {"a shared id is chosen together",
         concat(dailyMessages("f", 5, 2025, 3), {message("f", 2, at(2025, 3, 3))}), idsAt("f", {2}),
         idsAt("f", {1, 2, 3})},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Selection::withContext(c.chosen, refs(c.items)), c.expected) << c.name;
}

}  // namespace
}  // namespace kinfolio
