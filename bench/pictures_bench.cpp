// The pictures an export embeds: 200 twelve-megapixel JPEGs scaled to
// 1600 pixels, no cache, one thread per core, against the vipsthumbnail
// command run as one process per core over the same files.
//
//   pictures_bench [benchmark flags]
//
// The photos are made once under /tmp/kinfolio-bench/photos (about 0.5 GB).
// The run ends with the ratio of the medians; the goal is at most 1.5.
#include <benchmark/benchmark.h>
#include <vips/vips8>

#include <sys/resource.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "bench_support.h"
#include "media/pictures.h"

namespace {

namespace fs = std::filesystem;
using namespace kinfolio;
using bench::cores;
using bench::cpuSeconds;

const std::string kRoot = "/tmp/kinfolio-bench";
constexpr int kPhotos = 200;

// Smooth colour gradients with grain: compresses like a photograph (some
// 2-4 MB at quality 90), unlike pure noise or a flat colour.
std::vector<std::string> photos() {
    std::string dir = kRoot + "/photos";
    fs::create_directories(dir);
    VIPS_INIT("kinfolio-bench");  // for the benchmark's own pictures
    std::vector<std::string> paths;
    for (int i = 0; i < kPhotos; ++i) {
        std::string path = dir + "/IMG_" + std::to_string(1000 + i) + ".jpg";
        paths.push_back(path);
        if (fs::exists(path) && fs::file_size(path) > 100'000) continue;
        vips::VImage xy = vips::VImage::xyz(4000, 3000);
        vips::VImage x = xy[0], y = xy[1];
        double a = 0.02 + 0.001 * i, b = 0.015 + 0.0007 * (i % 13);
        vips::VImage r = (x * a).sin() * 100 + 128;
        vips::VImage g = (y * b).sin() * 90 + 120;
        vips::VImage bl = ((x + y) * (a * 0.5)).cos() * 80 + 110;
        vips::VImage grain = vips::VImage::gaussnoise(
            4000, 3000, vips::VImage::option()->set("sigma", 12.0)->set("seed", i));
        vips::VImage rgb = (r.bandjoin({g, bl}) + grain).cast(VIPS_FORMAT_UCHAR);
        rgb.write_to_file((path + "[Q=90]").c_str());
    }
    return paths;
}

void BM_PicturesNoCache(benchmark::State& state) {
    auto files = photos();
    const unsigned threads = cores();
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        // A fresh, empty cache every round: every picture is made.
        std::string cache = kRoot + "/picture-cache-" + std::to_string(round++);
        fs::remove_all(cache);
        fs::create_directories(cache);
        ::setenv("XDG_CACHE_HOME", cache.c_str(), 1);
        double cpuBefore = cpuSeconds(RUSAGE_SELF);
        state.ResumeTiming();

        std::atomic<size_t> next{0}, failed{0};
        auto work = [&] {
            for (size_t i = next++; i < files.size(); i = next++) {
                std::string id(64, '0');
                std::snprintf(id.data(), id.size() + 1, "%064zu", i);
                if (!Scanner::picture(files[i], id, 1600)) ++failed;
            }
            vips_thread_shutdown();
        };
        std::vector<std::thread> pool;
        for (unsigned t = 0; t < threads; ++t)
            pool.emplace_back(work);
        for (auto& t : pool)
            t.join();
        if (failed) state.SkipWithError("a picture was not made");

        state.PauseTiming();
        state.counters["cpu_ms_per_image"] = (cpuSeconds(RUSAGE_SELF) - cpuBefore) * 1000 / kPhotos;
        fs::remove_all(cache);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kPhotos);
}
BENCHMARK(BM_PicturesNoCache)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);

void BM_VipsthumbnailCommand(benchmark::State& state) {
    auto files = photos();
    std::string out = kRoot + "/vipsthumbnail-out";
    std::string list = kRoot + "/photos.txt";
    {
        std::FILE* f = std::fopen(list.c_str(), "w");
        for (const auto& p : files)
            std::fprintf(f, "%s\n", p.c_str());
        std::fclose(f);
    }
    // One process per core, each given its share of the files at once.
    unsigned n = cores();
    std::string command = "xargs -P " + std::to_string(n) + " -n " +
                          std::to_string((files.size() + n - 1) / n) +
                          " vipsthumbnail --size 1600 -o '" + out + "/tn_%s.jpg[Q=80]' < " + list;
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(out);
        fs::create_directories(out);
        double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0) state.SkipWithError("vipsthumbnail failed");
        state.counters["cpu_ms_per_image"] =
            (cpuSeconds(RUSAGE_CHILDREN) - cpuBefore) * 1000 / kPhotos;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kPhotos);
}
BENCHMARK(BM_VipsthumbnailCommand)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(3);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    bench::MedianReporter reporter("cpu_ms_per_image");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double ours = reporter.median("BM_PicturesNoCache");
    double theirs = reporter.median("BM_VipsthumbnailCommand");
    if (ours > 0 && theirs > 0)
        std::printf(
            "\npicture() / vipsthumbnail, medians: %.0f ms / %.0f ms = %.2f (goal <= 1.5)\n", ours,
            theirs, ours / theirs);
    double ourCpu = reporter.counterMedian("BM_PicturesNoCache");
    double theirCpu = reporter.counterMedian("BM_VipsthumbnailCommand");
    if (ourCpu > 0 && theirCpu > 0)
        std::printf("CPU per image, medians: %.1f ms / %.1f ms = %.2f\n", ourCpu, theirCpu,
                    ourCpu / theirCpu);
    benchmark::Shutdown();
}
