#include "scan/date_order.h"

#include <gtest/gtest.h>

namespace kinfolio::Scanner {
namespace {

const std::string kNote =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

TEST(ChatDateOrder, ChosenOrderWinsWithoutNote) {
    auto chosen = chatDateOrder("14/01/2025 09:00", DateOrder::monthFirst);
    EXPECT_EQ(chosen.order, DateOrder::monthFirst);
    EXPECT_FALSE(chosen.note);
}

TEST(ChatDateOrder, AutomaticUsesTheChatsOwnDates) {
    auto detected = chatDateOrder("05/01/2025 09:00\n01/14/2025 10:00\n", DateOrder::automatic);
    EXPECT_EQ(detected.order, DateOrder::monthFirst);
    EXPECT_FALSE(detected.note);
}

TEST(ChatDateOrder, UndecidedDatesAssumeDayFirstAndSaySo) {
    for (const char* text : {"05/01/2025 09:00\n", "14/01/2025 09:00\n01/14/2025 09:00\n", ""}) {
        auto assumed = chatDateOrder(text, DateOrder::automatic);
        EXPECT_EQ(assumed.order, DateOrder::dayFirst);
        EXPECT_EQ(assumed.note, kNote);
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
