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
            // In runs of 7, each thing falls in exactly one run, its own.
            std::vector<std::atomic<size_t>> runOf(count);
            std::atomic<size_t> runsSeen{0};
            Parallel::forEachRun(count, 7, [&](size_t r, size_t from, size_t to) {
                ++runsSeen;
                for (size_t i = from; i < to; ++i)
                    runOf[i] += r + 1;
            });
            EXPECT_EQ(runsSeen, Parallel::runCount(count, 7));
            for (size_t i = 0; i < count; ++i) {
                EXPECT_EQ(runs[i], 1) << i;
                EXPECT_EQ(runOf[i], i / 7 + 1) << i;
            }
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
    const std::pair<const char*, unsigned> cases[] = {{"3", 3},      {"1", 1},       {"0", cores},
                                                      {"-2", cores}, {"two", cores}, {"4x", cores},
                                                      {"", cores}};
    for (const auto& [value, expected] : cases) {
        ::setenv("KINFOLIO_THREADS", value, 1);
        EXPECT_EQ(Parallel::threads(), expected) << value;
    }
    Parallel::setThreads(5);
    EXPECT_EQ(Parallel::threads(), 5u);  // an explicit choice wins
    Parallel::setThreads(0);
    ::unsetenv("KINFOLIO_THREADS");
    EXPECT_EQ(Parallel::threads(), cores);
}

}  // namespace
}  // namespace kinfolio
