// Selection over a synthetic scan: a long relationship in 40 chats, each
// three years of messages with a few calls and system lines among them.
#include <benchmark/benchmark.h>

#include <map>

#include "model/calendar.h"
#include "selection/selection.h"

namespace {

using namespace kinfolio;

constexpr int kChats = 40;

const ScanResult& syntheticScan(int64_t messages) {
    static std::map<int64_t, ScanResult> made;
    if (auto found = made.find(messages); found != made.end()) return found->second;
    ScanResult scan;
    scan.folder = "/materials";
    const Instant start = *Calendar::makeDate(2022, 1, 1);
    const double span = 3 * 365 * 86400.0;
    const int64_t perChat = messages / kChats;
    for (int c = 0; c < kChats; ++c) {
        Source source;
        source.kind = SourceKind::whatsapp;
        source.id = std::string(62, 'a') + std::to_string(10 + c);
        source.name = "Chat " + std::to_string(c);
        source.items.reserve(static_cast<size_t>(perChat));
        for (int64_t i = 0; i < perChat; ++i) {
            Evidence e;
            e.kind = i % 100 == 7 ? ItemKind::call : ItemKind::message;
            e.sender = i % 50 == 3 ? "" : (i % 2 ? "Sam" : "Alex");
            e.text = "A message of ordinary length, about forty characters.";
            e.fileID = source.id;
            e.position = i + 1;
            e.date = start + span * static_cast<double>(i) / static_cast<double>(perChat);
            source.items.push_back(std::move(e));
        }
        scan.sources.push_back(std::move(source));
    }
    return made.emplace(messages, std::move(scan)).first->second;
}

// Two sizes a factor of ten apart, to see that the time grows linearly.
void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

Settings benchSettings() {
    Settings settings;  // 5 messages a month with context, as a new user has it
    settings.addedItems = {std::string(62, 'a') + "10:1234", std::string(62, 'a') + "11:99"};
    settings.excludedItems = {std::string(62, 'a') + "12:1"};
    return settings;
}

void BM_Selected(benchmark::State& state) {
    const ScanResult& scan = syntheticScan(state.range(0));
    Settings settings = benchSettings();
    for (auto _ : state)
        benchmark::DoNotOptimize(Selection::selected(scan, settings));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_Selected)->Apply(sizes);

void BM_Proposed(benchmark::State& state) {
    const ScanResult& scan = syntheticScan(state.range(0));
    Settings settings = benchSettings();
    for (auto _ : state)
        benchmark::DoNotOptimize(Selection::proposed(scan, settings));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_Proposed)->Apply(sizes);

// The item list's candidates: a copy of every item in range.
void BM_Candidates(benchmark::State& state) {
    const ScanResult& scan = syntheticScan(state.range(0));
    Settings settings = benchSettings();
    for (auto _ : state)
        benchmark::DoNotOptimize(Selection::candidates(scan, settings));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_Candidates)->Apply(sizes);

// Everything the window recomputes after a change: the selection and its
// coverage texts.
void BM_SelectedWithCoverage(benchmark::State& state) {
    const ScanResult& scan = syntheticScan(state.range(0));
    Settings settings = benchSettings();
    for (auto _ : state) {
        auto chosen = Selection::selected(scan, settings);
        benchmark::DoNotOptimize(Selection::summary(chosen));
        benchmark::DoNotOptimize(Selection::gapMonths(chosen));
        benchmark::DoNotOptimize(Selection::exportCount(chosen));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SelectedWithCoverage)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
