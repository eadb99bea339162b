// What the window's thread spends on one change while a chat of a million
// messages is loaded. The model runs on a ManualExecutor, so its background
// work (the selection, the preview's drawing) runs when the benchmark says
// and is left out of the time; what is timed is the call itself and the
// results it gets posted back, each on the main thread. The goal is under
// 50 ms; the median of the repetitions is the number to read.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "app/app_model.h"
#include "support/fake_services.h"

namespace kinfolio {
namespace {

constexpr size_t kMessages = 1'000'000;

double secondsOf(const std::function<void()>& work) {
    auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Runs every background task untimed, and the main-thread work each one
// posts timed; returns the main thread's seconds.
double finishInBackground(ManualExecutor& executor) {
    double seconds = 0;
    while (executor.runNextBackground())
        seconds += secondsOf([&] { executor.runMainQueue(); });
    return seconds;
}

// A model with the chat scanned, selected and previewed.
struct Loaded {
    Loaded() {
        std::string folder = "/tmp/kinfolio-bench/app_model";
        std::filesystem::create_directories(folder);
        model = std::make_unique<AppModel>(executor, testing::fakeServices(log, kMessages),
                                           SettingsStore(folder + "/settings.json"));
        model->start();
        model->chooseFolder(folder);
        executor.settle();
    }

    // Times `change` and everything it leads to on the main thread, up to
    // and including the new preview's arrival.
    double mainThreadSeconds(const std::function<void()>& change) {
        double seconds = secondsOf(change);
        seconds += finishInBackground(executor);
        seconds += secondsOf([&] { executor.advance(AppModel::kPreviewDelay); });
        seconds += finishInBackground(executor);
        return seconds;
    }

    ManualExecutor executor;
    std::shared_ptr<testing::FakeLog> log = std::make_shared<testing::FakeLog>();
    std::unique_ptr<AppModel> model;
};

// Stepping the messages per month: a change that selects anew.
void BM_SettingsChange(benchmark::State& state) {
    Loaded loaded;
    int step = 0;
    for (auto _ : state) {
        Settings next = loaded.model->state().settings;
        next.messagesPerMonth = 5 + (++step % 2);
        state.SetIterationTime(loaded.mainThreadSeconds([&] { loaded.model->setSettings(next); }));
    }
    state.counters["selected"] = static_cast<double>(loaded.model->state().selected.size());
}
BENCHMARK(BM_SettingsChange)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// A tick on one item of the list, which the settings record.
void BM_Tick(benchmark::State& state) {
    Loaded loaded;
    const Evidence item = *loaded.model->state().candidates[kMessages / 2];
    bool on = true;
    for (auto _ : state) {
        state.SetIterationTime(
            loaded.mainThreadSeconds([&] { loaded.model->setSelected(item, on); }));
        on = !on;
    }
}
BENCHMARK(BM_Tick)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace
}  // namespace kinfolio

BENCHMARK_MAIN();
