#include "model/shared_text.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kinfolio {
namespace {

// Equal texts made anywhere, on any thread, are one kept copy, and compare
// like the strings they hold; a sender's name is asked for a million times.
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
    // More distinct texts than a thread remembers, asked for in turns: each
    // is still its own one copy, and texts that differ only in length apart.
    std::vector<SharedText> names;
    for (int round = 0; round < 3; ++round)
        for (int i = 0; i < 20; ++i)
            names.emplace_back(std::string(static_cast<size_t>(i + 1), 'n'));
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(names[i].size(), i % 20 + 1);
        EXPECT_EQ(&names[i].str(), &names[i % 20].str());
    }
    EXPECT_NE(SharedText("b"), SharedText("a"));
    EXPECT_LT(SharedText("a"), SharedText("b"));
    EXPECT_TRUE(SharedText("").empty());
    EXPECT_EQ(SharedText(), SharedText(""));
}

}  // namespace
}  // namespace kinfolio
