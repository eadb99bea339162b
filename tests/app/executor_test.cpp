#include "app/executor.h"

#include <gtest/gtest.h>

namespace kinfolio {
namespace {

TEST(ManualExecutor, TimersFireInDueOrderOnlyWhenTimeAdvances) {
    ManualExecutor ex;
    std::vector<std::string> order;
    ex.after(0.5, [&] { order.push_back("late"); });
    ex.after(0.25, [&] { order.push_back("early"); });
    ex.after(0.25, [&] { order.push_back("early too"); });
    ex.drain();
    EXPECT_TRUE(order.empty());
    ex.advance(0.24);
    EXPECT_TRUE(order.empty());
    EXPECT_DOUBLE_EQ(ex.now(), 0.24);
    ex.advance(0.3);
    EXPECT_EQ(order, (std::vector<std::string>{"early", "early too", "late"}));
    EXPECT_EQ(ex.pendingTimers(), 0u);
}

TEST(ManualExecutor, ACancelledTimerNeverFires) {
    ManualExecutor ex;
    int fired = 0;
    auto a = ex.after(0.25, [&] { fired += 1; });
    ex.after(0.25, [&] { fired += 10; });
    ex.cancel(a);
    ex.cancel(a);
    ex.cancel(12345);
    ex.settle();
    EXPECT_EQ(fired, 10);
}

TEST(ManualExecutor, TimersSeeTheClockAtTheirDueTime) {
    ManualExecutor ex;
    double seen = -1;
    ex.after(1, [&] { seen = ex.now(); });
    ex.advance(5);
    EXPECT_DOUBLE_EQ(seen, 1);
    EXPECT_DOUBLE_EQ(ex.now(), 5);
}

TEST(ManualExecutor, DrainRunsWhatTasksQueueUntilQuiet) {
    ManualExecutor ex;
    std::vector<int> order;
    ex.background([&] {
        order.push_back(1);
        ex.post([&] {
            order.push_back(2);
            ex.background([&] { order.push_back(3); });
        });
    });
    ex.post([&] { order.push_back(0); });
    EXPECT_EQ(ex.pendingBackground(), 1u);
    EXPECT_EQ(ex.pendingMain(), 1u);
    ex.drain();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

}  // namespace
}  // namespace kinfolio
