#include "model/shared_text.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kinfolio {
namespace {

// Equal texts made anywhere, on any thread, are one kept copy, and compare
// like the strings they hold.
TEST(SharedText, EqualTextsMadeOnManyThreadsShareOneCopy) {
    const std::string id(64, 'a');
    std::vector<SharedText> made(8);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < made.size(); ++i)
        threads.emplace_back([&, i] { made[i] = SharedText(id.substr(0, 32) + id.substr(32)); });
    for (auto& t : threads)
        t.join();
    for (const auto& text : made) {
        EXPECT_EQ(&text.str(), &made[0].str());
        EXPECT_EQ(text, id);
    }
    EXPECT_NE(SharedText("b"), SharedText("a"));
    EXPECT_LT(SharedText("a"), SharedText("b"));
    EXPECT_TRUE(SharedText("").empty());
    EXPECT_EQ(SharedText(), SharedText(""));
}

}  // namespace
}  // namespace kinfolio
