#include "model/parallel.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace kinfolio::Parallel {

namespace {
std::atomic<unsigned> chosen{0};
}

unsigned threads() {
    if (unsigned n = chosen.load(std::memory_order_relaxed)) return n;
    if (const char* env = std::getenv("KINFOLIO_THREADS")) {
        char* end = nullptr;
        long n = std::strtol(env, &end, 10);
        if (end != env && *end == '\0' && n >= 1) return static_cast<unsigned>(std::min(n, 256L));
    }
    // The standard library asks the system anew on every call, a file read.
    static const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    return cores;
}

void setThreads(unsigned count) {
    chosen.store(count, std::memory_order_relaxed);
}

void forEach(size_t count, const std::function<void(size_t)>& work) {
    std::vector<std::exception_ptr> errors(count);
    std::atomic<size_t> next{0};
    auto run = [&] {
        for (size_t i; (i = next.fetch_add(1)) < count;) {
            try {
                work(i);
            } catch (...) {
                errors[i] = std::current_exception();
            }
        }
    };
    size_t helpers = std::min<size_t>(threads(), count);
    std::vector<std::thread> pool;
    for (size_t t = 1; t < helpers; ++t) {
        try {
            pool.emplace_back(run);
        } catch (const std::system_error&) {
            break;  // no more threads to be had: fewer do the same work
        }
    }
    run();
    for (auto& t : pool)
        t.join();
    for (auto& e : errors)
        if (e) std::rethrow_exception(e);
}

void forEachRun(size_t count, size_t length,
                const std::function<void(size_t run, size_t from, size_t to)>& work) {
    forEach(runCount(count, length),
            [&](size_t r) { work(r, r * length, std::min(count, (r + 1) * length)); });
}

std::vector<size_t> lineCuts(std::string_view text,
                             const std::function<bool(std::string_view line)>& startsPiece) {
    constexpr size_t kSmallestPiece = 1 << 20;
    size_t pieces = std::min<size_t>(threads(), text.size() / kSmallestPiece);
    std::vector<size_t> cuts{0};
    for (size_t k = 1; k < pieces; ++k) {
        size_t at = text.find('\n', std::max(k * text.size() / pieces, cuts.back()));
        while (at != std::string_view::npos && ++at < text.size()) {
            size_t end = std::min(text.find('\n', at), text.size());
            if (!startsPiece || startsPiece(text.substr(at, end - at))) break;
            at = end == text.size() ? std::string_view::npos : end;
        }
        if (at == std::string_view::npos || at >= text.size()) break;
        cuts.push_back(at);
    }
    cuts.push_back(text.size());
    return cuts;
}

}  // namespace kinfolio::Parallel
