// Splitting a large photo-heavy export into 10 MB parts, against the qpdf
// command line cutting the same file into single pages.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "layout/pdf_exporter.h"
// The generator the splitting tests use, so both measure the same shape of file.
#include "../tests/support/sample_export.h"

namespace {

namespace fs = std::filesystem;

constexpr int kPages = 300;
constexpr int64_t kLimit = 10'000'000;

// An A4 export of 300 pages, each with its own photo-sized image of about
// 170 KB, plus the page labels, outline and contents links of an export.
std::string generateExport() {
    std::vector<kinfolio::Sample::Page> pages;
    for (int i = 0; i < kPages; ++i)
        pages.push_back({280 + (i % 7) * 4, 200, 595, 842});
    return kinfolio::Sample::makeExport(pages, 2025);
}

const std::string& exportData() {
    static const std::string data = generateExport();
    return data;
}

// The same document on disk, for the qpdf command line.
const fs::path& exportFile() {
    static const fs::path file = [] {
        fs::path folder = fs::temp_directory_path() / "kinfolio-split-bench";
        fs::create_directories(folder);
        fs::path path = folder / "export.pdf";
        std::ofstream(path, std::ios::binary) << exportData();
        return path;
    }();
    return file;
}

void BM_Split(benchmark::State& state) {
    const std::string& data = exportData();
    size_t parts = 0;
    for (auto _ : state) {
        auto result = kinfolio::PDFExporter::split(data, kLimit);
        parts = result.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["MB"] = double(data.size()) / 1e6;
    state.counters["parts"] = double(parts);
}
BENCHMARK(BM_Split)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_QpdfSplitPages(benchmark::State& state) {
    const fs::path& input = exportFile();
    fs::path output = input.parent_path() / "pages";
    fs::create_directories(output);
    std::string command =
        "qpdf --split-pages '" + input.string() + "' '" + (output / "page-%d.pdf").string() + "'";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("qpdf --split-pages failed (is the qpdf package installed?)");
            break;
        }
    }
    fs::remove_all(output);
}
BENCHMARK(BM_QpdfSplitPages)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

}  // namespace

BENCHMARK_MAIN();
