#include "model/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kinfolio {
namespace {

TEST(Parallel, EveryPieceRunsOnceAndTheFirstFailureIsRethrown) {
    for (unsigned threads : {1u, 2u, 8u}) {
        Parallel::setThreads(threads);
        for (size_t count : {0, 1, 5, 1000}) {
            SCOPED_TRACE(std::to_string(threads) + " threads, " + std::to_string(count));
            std::vector<std::atomic<int>> runs(count);
            Parallel::forEach(count, [&](size_t i) { ++runs[i]; });
            for (size_t i = 0; i < count; ++i)
                EXPECT_EQ(runs[i], 1) << i;
        }
        // Every piece still runs; the lowest failing index is the one reported.
        std::atomic<int> ran{0};
        try {
            Parallel::forEach(50, [&](size_t i) {
                ++ran;
                if (i == 7 || i == 30) throw std::runtime_error("piece " + std::to_string(i));
            });
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "piece 7");
        }
        EXPECT_EQ(ran, 50);
    }
    Parallel::setThreads(0);
}

TEST(Parallel, ThreadsComeFromTheEnvironmentWhenItHoldsACount) {
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    struct Case {
        const char* value;
        unsigned expected;
    } cases[] = {{"3", 3},       {"1", 1},      {"0", cores}, {"-2", cores},
                 {"two", cores}, {"4x", cores}, {"", cores}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        ::setenv("KINFOLIO_THREADS", c.value, 1);
        EXPECT_EQ(Parallel::threads(), c.expected);
    }
    Parallel::setThreads(5);
    EXPECT_EQ(Parallel::threads(), 5u);  // an explicit choice wins
    Parallel::setThreads(0);
    ::unsetenv("KINFOLIO_THREADS");
    EXPECT_EQ(Parallel::threads(), cores);
}

// Pieces start at line starts the caller accepts, and a text too small to
// share out, or with no acceptable line, stays whole.
TEST(Parallel, LinesAreCutWhereTheCallerAccepts) {
    Parallel::setThreads(4);
    std::string lines;
    for (int i = 0; lines.size() < (3u << 20); ++i)
        lines += (i % 5 ? "continued line " : "Message ") + std::to_string(i) + "\n";
    auto message = [](std::string_view line) { return line.starts_with("Message"); };
    auto cuts = Parallel::lineCuts(lines, message);
    ASSERT_EQ(cuts.size(), 4u);  // three pieces of a megabyte or more
    EXPECT_EQ(cuts.front(), 0u);
    EXPECT_EQ(cuts.back(), lines.size());
    for (size_t k = 1; k + 1 < cuts.size(); ++k) {
        EXPECT_LT(cuts[k - 1], cuts[k]);
        EXPECT_EQ(lines[cuts[k] - 1], '\n');
        EXPECT_TRUE(message(std::string_view(lines).substr(cuts[k]))) << cuts[k];
    }
    EXPECT_EQ(Parallel::lineCuts(lines.substr(0, 900000)), (std::vector<size_t>{0, 900000}));
    auto never = [](std::string_view) { return false; };
    EXPECT_EQ(Parallel::lineCuts(lines, never), (std::vector<size_t>{0, lines.size()}));
    Parallel::setThreads(0);
}

}  // namespace
}  // namespace kinfolio
