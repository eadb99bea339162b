// The record step (read once, memory-mapped, SHA-256) against
// `openssl dgst -sha256` over the same 1 GB of files, both from the page
// cache; and listing a folder of 20,000 files.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "model/files.h"
#include "scan/scanner.h"

namespace fs = std::filesystem;
using namespace kinfolio;

namespace {

const std::string kRoot = "/tmp/kinfolio-bench";

// 64 files of 16 MiB: 1 GiB of incompressible bytes, made once.
std::vector<std::string> bigFiles() {
    std::string dir = kRoot + "/record";
    std::vector<std::string> paths;
    std::mt19937_64 rng(42);
    for (int i = 0; i < 64; ++i) {
        std::string p = dir + "/file" + std::to_string(i) + ".bin";
        paths.push_back(p);
        if (fs::exists(p) && fs::file_size(p) == (16u << 20)) continue;
        fs::create_directories(dir);
        std::vector<uint64_t> data((16u << 20) / 8);
        for (auto& w : data)
            w = rng();
        std::ofstream(p, std::ios::binary)
            .write(reinterpret_cast<const char*>(data.data()),
                   static_cast<std::streamsize>(data.size() * 8));
    }
    return paths;
}

// 20,000 small files in 200 folders.
std::string manyFiles() {
    std::string dir = kRoot + "/listing";
    if (!fs::exists(dir + "/d199/f99.jpg")) {
        for (int d = 0; d < 200; ++d) {
            fs::create_directories(dir + "/d" + std::to_string(d));
            for (int f = 0; f < 100; ++f)
                std::ofstream(dir + "/d" + std::to_string(d) + "/f" + std::to_string(f) + ".jpg")
                    << "x";
        }
    }
    return dir;
}

void BM_RecordStep(benchmark::State& state) {
    auto files = bigFiles();
    int64_t bytes = 0;
    for (auto _ : state) {
        for (const auto& p : files) {
            auto f = MappedFile::open(p);
            benchmark::DoNotOptimize(Scanner::sha256Hex(f->bytes()));
            bytes += static_cast<int64_t>(f->size());
        }
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_RecordStep)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_OpensslDgst(benchmark::State& state) {
    auto files = bigFiles();
    std::string command = "openssl dgst -sha256";
    for (const auto& p : files)
        command += " " + p;
    command += " > /dev/null";
    int64_t bytes = 0;
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("openssl failed");
        bytes += 64LL << 24;
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_OpensslDgst)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_ListFiles(benchmark::State& state) {
    std::string dir = manyFiles();
    for (auto _ : state)
        benchmark::DoNotOptimize(Scanner::listFiles(dir));
}
BENCHMARK(BM_ListFiles)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
