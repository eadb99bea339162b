#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

// Work spread over the machine's cores. Results never depend on how many
// threads ran: each piece of work writes only its own slot, and callers join
// the slots in order.
namespace kinfolio::Parallel {

// How many threads work at once: KINFOLIO_THREADS when it is set to a number
// from 1 up, else one per core.
unsigned threads();
// Overrides threads() for this process; 0 goes back to the default.
void setThreads(unsigned count);

// Runs work(i) for every i in [0, count), on up to threads() threads with the
// calling one among them, and returns when all are done. An exception is
// rethrown after every piece has finished: the one of the lowest i.
void forEach(size_t count, const std::function<void(size_t)>& work);

// Work on `count` things shared out in runs of `length`: work(run, from, to)
// for each run, its things [from, to), as forEach runs them. A run's results
// go to slot `run` of a vector of runCount() slots.
inline size_t runCount(size_t count, size_t length) {
    return (count + length - 1) / length;
}
void forEachRun(size_t count, size_t length,
                const std::function<void(size_t run, size_t from, size_t to)>& work);

// Where to cut a text of lines into about one piece per thread, none under a
// megabyte: 0, the starts of the lines where pieces begin, and the text's
// size. A line that `startsPiece` refuses moves the cut on to the next line.
std::vector<size_t> lineCuts(std::string_view text,
                             const std::function<bool(std::string_view line)>& startsPiece = {});

}  // namespace kinfolio::Parallel
