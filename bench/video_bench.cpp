// The still frames of 20 full-HD H.264 videos (30 to 120 s, a key frame
// every 2 s), one video at a time as the scan reads them, with an empty
// cache, against the ffmpeg command taking the same frame at the same size:
//
//   ffmpeg -ss 1 -i F -frames:v 1
//          -vf scale=1600:1600:force_original_aspect_ratio=decrease -y out.png
//
//   video_bench [benchmark flags]
//
// The videos are made once with the ffmpeg command under
// /tmp/kinfolio-bench/videos (about 3 GB, a few minutes). The run ends with
// the ratio of the medians; the goal is at most 1.0.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_support.h"
#include "media/video.h"
#include "model/files.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace kinfolio;
using bench::cpuSeconds;

const std::string kRoot = "/tmp/kinfolio-bench";
constexpr int kVideos = 20;

struct BenchVideo {
    std::string path;
    double seconds = 0;
};

// Runs a program without a shell and waits for it; true when it exits with 0.
bool run(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (const auto& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return false;
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Lengths spread evenly from 30 to 120 s. A file is made again only when it
// is missing; it is written under another name first, so an interrupted run
// leaves no half file behind.
std::vector<BenchVideo> videos() {
    std::string dir = kRoot + "/videos";
    fs::create_directories(dir);
    std::vector<BenchVideo> out;
    for (int i = 0; i < kVideos; ++i) {
        int seconds = 30 + 90 * i / (kVideos - 1);
        std::string path =
            dir + "/VID_" + std::to_string(i) + "_" + std::to_string(seconds) + "s.mp4";
        out.push_back({path, static_cast<double>(seconds)});
        if (fs::exists(path)) continue;
        std::fprintf(stderr, "making %s\n", path.c_str());
        std::string partial = dir + "/partial.mp4";
        if (!run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=30",
                  "-t", std::to_string(seconds), "-c:v", "libx264", "-preset", "ultrafast", "-g",
                  "60", "-pix_fmt", "yuv420p", "-y", partial}))
            return {};
        fs::rename(partial, path);
    }
    return out;
}

// An id per file made from its path: the scan has the SHA-256 of the bytes
// already, and hashing gigabytes is no part of taking the frame.
std::string idOf(const BenchVideo& video) {
    return sha256Hex(video.path);
}

void BM_VideoInfoNoCache(benchmark::State& state) {
    auto files = videos();
    if (files.empty()) return state.SkipWithError("the videos could not be made");
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        // A fresh, empty cache every round: every frame is taken.
        std::string cache = kRoot + "/frame-cache-" + std::to_string(round++);
        fs::remove_all(cache);
        fs::create_directories(cache);
        ::setenv("XDG_CACHE_HOME", cache.c_str(), 1);
        double cpuBefore = cpuSeconds(RUSAGE_SELF);
        state.ResumeTiming();

        for (size_t i = 0; i < files.size(); ++i) {
            auto file = MappedFile::open(files[i].path);
            auto info = file ? Scanner::videoInfo(file->bytes(), idOf(files[i])) : std::nullopt;
            if (!info || !info->frame) state.SkipWithError("a frame was not taken");
        }

        state.PauseTiming();
        state.counters["cpu_ms_per_video"] = (cpuSeconds(RUSAGE_SELF) - cpuBefore) * 1000 / kVideos;
        fs::remove_all(cache);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kVideos);
}
BENCHMARK(BM_VideoInfoNoCache)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(5);

void BM_FfmpegCommand(benchmark::State& state) {
    auto files = videos();
    if (files.empty()) return state.SkipWithError("the videos could not be made");
    std::string out = kRoot + "/ffmpeg-frame.png";
    for (auto _ : state) {
        state.PauseTiming();
        double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
        state.ResumeTiming();
        for (const auto& file : files) {
            std::string at = std::to_string(std::min(file.seconds * 0.5, 1.0));
            if (!run({"ffmpeg", "-v", "quiet", "-ss", at, "-i", file.path, "-frames:v", "1", "-vf",
                      "scale=1600:1600:force_original_aspect_ratio=decrease", "-y", out}))
                state.SkipWithError("ffmpeg failed");
        }
        state.PauseTiming();
        state.counters["cpu_ms_per_video"] =
            (cpuSeconds(RUSAGE_CHILDREN) - cpuBefore) * 1000 / kVideos;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kVideos);
}
BENCHMARK(BM_FfmpegCommand)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    bench::MedianReporter reporter("cpu_ms_per_video");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double ours = reporter.median("BM_VideoInfoNoCache");
    double theirs = reporter.median("BM_FfmpegCommand");
    if (ours > 0 && theirs > 0)
        std::printf(
            "\nvideoInfo() / ffmpeg command, 20 videos, medians: %.0f ms / %.0f ms = %.2f "
            "(goal <= 1.0)\n",
            ours, theirs, ours / theirs);
    double ourCpu = reporter.counterMedian("BM_VideoInfoNoCache");
    double theirCpu = reporter.counterMedian("BM_FfmpegCommand");
    if (ourCpu > 0 && theirCpu > 0)
        std::printf("CPU per video, medians: %.1f ms / %.1f ms = %.2f\n", ourCpu, theirCpu,
                    ourCpu / theirCpu);
    benchmark::Shutdown();
}
