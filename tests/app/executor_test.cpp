#include "app/executor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kinfolio {
namespace {

TEST(ManualExecutor, TimersFireInDueOrderAtTheirTimeOnlyWhenTimeAdvances) {
    ManualExecutor ex;
    std::vector<std::string> order;
    auto note = [&](std::string name) {
        return [&, name] { order.push_back(name + "@" + std::to_string(ex.now())); };
    };
    ex.after(0.5, note("late"));
    ex.after(0.25, note("early"));
    ex.after(0.25, note("early too"));
    auto cancelled = ex.after(0.25, note("cancelled"));
    ex.cancel(cancelled);
    ex.cancel(cancelled);
    ex.cancel(12345);
    ex.drain();
    ex.advance(0.24);
    EXPECT_TRUE(order.empty());
    EXPECT_DOUBLE_EQ(ex.now(), 0.24);
    ex.advance(5);
    EXPECT_EQ(order,
              (std::vector<std::string>{"early@0.250000", "early too@0.250000", "late@0.500000"}));
    EXPECT_DOUBLE_EQ(ex.now(), 5.24);
    EXPECT_EQ(ex.pendingTimers(), 0u);
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
