// Reading 100 phone screenshots (1170 × 2532, 20 chat lines each) with
// recognizeAll and empty caches, against the tesseract command line run on
// one file after the other, and whether both find the same lines.
//
//   text_recognition_bench [benchmark flags]
//
// The screenshots are made once under /tmp/kinfolio-bench/screenshots. The
// command line is timed as it starts by default (OpenMP on every core) over
// the first 10 files only, since that takes seconds per file here, and with
// OMP_THREAD_LIMIT=1 over all 100. The run ends with the ratios of the
// medians per file; the goal is at least 1.8 against the command line.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>
#include <vips/vips8>

#include "bench_support.h"
#include "media/text_recognition.h"

namespace {

namespace fs = std::filesystem;
using namespace kinfolio;
using bench::cpuSeconds;

const std::string kRoot = "/tmp/kinfolio-bench";
constexpr int kScreenshots = 100;
constexpr int kSlowCommandFiles = 10;

const char* const kWords[] = {
    "the",  "flight", "was",   "late",  "again",   "love", "you",    "call",    "me",   "when",
    "home", "dinner", "photo", "scarf", "cold",    "here", "Lisbon", "tonight", "miss", "tomorrow",
    "good", "night",  "ok",    "see",   "station", "visa", "forms",  "Friday"};

// Bubbles alternate left and right, as in a chat.
std::vector<std::string> screenshots() {
    std::string dir = kRoot + "/screenshots";
    fs::create_directories(dir);
    VIPS_INIT("kinfolio-bench");  // for the benchmark's own pictures
    std::mt19937 rng(2025);
    std::uniform_int_distribution<int> count(3, 6), word(0, std::size(kWords) - 1);
    std::vector<std::string> paths;
    for (int i = 0; i < kScreenshots; ++i) {
        std::string path = dir + "/Screenshot_" + std::to_string(1000 + i) + ".png";
        paths.push_back(path);
        std::vector<std::string> lines;
        for (int l = 0; l < 20; ++l) {
            std::string text;
            for (int w = count(rng); w > 0; --w)
                text += (text.empty() ? "" : " ") + std::string(kWords[word(rng)]);
            lines.push_back(text);
        }
        if (fs::exists(path)) continue;
        vips::VImage page =
            vips::VImage::black(1170, 2532).linear(1.0, 255.0).cast(VIPS_FORMAT_UCHAR);
        for (int l = 0; l < 20; ++l) {
            vips::VImage ink = vips::VImage::text(
                lines[l].c_str(),
                vips::VImage::option()->set("font", "DejaVu Sans 42")->set("dpi", 72));
            int x = l % 2 ? 1170 - 60 - ink.width() : 60;
            page = page.insert((255 - ink).cast(VIPS_FORMAT_UCHAR), std::max(x, 0), 140 + l * 115);
        }
        page.write_to_file(path.c_str());
    }
    return paths;
}

std::vector<Scanner::RecognitionJob> jobsFor(const std::vector<std::string>& files) {
    std::vector<Scanner::RecognitionJob> jobs;
    for (size_t i = 0; i < files.size(); ++i) {
        char id[65];
        std::snprintf(id, sizeof id, "%064zu", i);
        jobs.push_back({files[i], id, {}});
    }
    return jobs;
}

void BM_RecognizeAll(benchmark::State& state) {
    auto files = screenshots();
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::string cache = kRoot + "/text-cache-" + std::to_string(round++);
        fs::remove_all(cache);
        fs::create_directories(cache);
        ::setenv("XDG_CACHE_HOME", cache.c_str(), 1);
        Scanner::detail::clearTextCacheForTesting();
        auto jobs = jobsFor(files);
        double cpuBefore = cpuSeconds(RUSAGE_SELF);
        state.ResumeTiming();

        Scanner::recognizeAll(jobs, [](size_t, size_t) {});

        state.PauseTiming();
        state.counters["cpu_ms_per_file"] =
            (cpuSeconds(RUSAGE_SELF) - cpuBefore) * 1000 / kScreenshots;
        fs::remove_all(cache);
        state.ResumeTiming();
    }
    ::setenv("XDG_CACHE_HOME", (kRoot + "/text-cache").c_str(), 1);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kScreenshots);
}
BENCHMARK(BM_RecognizeAll)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);

// Arg 0: the command as it starts by default; arg 1: OMP_THREAD_LIMIT=1.
void BM_TesseractCommand(benchmark::State& state) {
    auto files = screenshots();
    bool limited = state.range(0) == 1;
    size_t n = limited ? files.size() : kSlowCommandFiles;
    std::string env = limited ? "env OMP_THREAD_LIMIT=1 " : "env -u OMP_THREAD_LIMIT ";
    for (auto _ : state) {
        double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
        for (size_t i = 0; i < n; ++i) {
            std::string command = env + "tesseract '" + files[i] + "' - >/dev/null 2>&1";
            if (std::system(command.c_str()) != 0) state.SkipWithError("tesseract failed");
        }
        state.counters["cpu_ms_per_file"] =
            (cpuSeconds(RUSAGE_CHILDREN) - cpuBefore) * 1000 / static_cast<double>(n);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n));
}
BENCHMARK(BM_TesseractCommand)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);

std::vector<std::string> commandLines(const std::string& file) {
    std::string command = "env OMP_THREAD_LIMIT=1 tesseract '" + file + "' - 2>/dev/null";
    std::vector<std::string> lines;
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return lines;
    std::string all;
    char buffer[4096];
    for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        all.append(buffer, got);
    ::pclose(pipe);
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        if (end == std::string::npos) end = all.size();
        std::string line = all.substr(start, end - start);
        // The command ends a page with a form feed.
        if (!line.empty() && line != "\f") lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

// Whether recognizeAll and the command line read the same lines.
void compareLines() {
    auto files = screenshots();
    auto jobs = jobsFor(files);
    Scanner::recognizeAll(jobs, [](size_t, size_t) {});
    int same = 0, shown = 0;
    size_t ourLines = 0, theirLines = 0;
    for (const auto& job : jobs) {
        std::vector<std::string> ours;
        for (const auto& box : job.boxes)
            ours.push_back(box.text);
        auto theirs = commandLines(job.path);
        ourLines += ours.size();
        theirLines += theirs.size();
        if (ours == theirs) {
            ++same;
            continue;
        }
        if (shown++ < 3) {
            std::printf("differs: %s\n", job.path.c_str());
            for (size_t i = 0; i < std::max(ours.size(), theirs.size()); ++i) {
                std::string a = i < ours.size() ? ours[i] : "(none)";
                std::string b = i < theirs.size() ? theirs[i] : "(none)";
                if (a != b)
                    std::printf("  line %zu: ours [%s] command [%s]\n", i + 1, a.c_str(),
                                b.c_str());
            }
        }
    }
    std::printf(
        "same lines in %d of %zu screenshots (%zu lines ours, %zu the command's); languages %s\n",
        same, jobs.size(), ourLines, theirLines, Scanner::recognitionLanguages().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // Never the user's own cache, also for the comparison at the end.
    fs::create_directories(kRoot + "/text-cache");
    ::setenv("XDG_CACHE_HOME", (kRoot + "/text-cache").c_str(), 1);
    bench::MedianReporter reporter("cpu_ms_per_file");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double ours = reporter.median("BM_RecognizeAll") / kScreenshots;
    double limited = reporter.median("BM_TesseractCommand/1") / kScreenshots;
    double plain = reporter.median("BM_TesseractCommand/0") / kSlowCommandFiles;
    std::printf("\nper screenshot, medians: recognizeAll %.0f ms", ours);
    if (ours > 0 && limited > 0)
        std::printf("; command with OMP_THREAD_LIMIT=1 %.0f ms (%.2fx)", limited, limited / ours);
    if (ours > 0 && plain > 0)
        std::printf("; command as started %.0f ms (%.2fx)", plain, plain / ours);
    std::printf("; goal >= 1.8x\n");
    double ourCpu = reporter.counterMedian("BM_RecognizeAll");
    double limitedCpu = reporter.counterMedian("BM_TesseractCommand/1");
    if (ourCpu > 0 && limitedCpu > 0)
        std::printf(
            "CPU per screenshot, medians: recognizeAll %.0f ms; command with "
            "OMP_THREAD_LIMIT=1 %.0f ms (%.2fx)\n",
            ourCpu, limitedCpu, limitedCpu / ourCpu);
    compareLines();
    benchmark::Shutdown();
}
