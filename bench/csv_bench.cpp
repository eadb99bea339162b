// Reading a chat spreadsheet of a million rows, the size of a long
// relationship kept in one export. Goal: under 2 s for the whole file.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "importers/csv.h"
#include "model/files.h"
#include "scan/scanner.h"

namespace {

using kinfolio::DateOrder;

constexpr int kRows = 1'000'000;

// Rows one minute apart with quoted text every fourth row. `quillory` writes
// the Quillory layout with its zone suffix; otherwise the generic one with
// the given date layout ("iso" or "dayFirst").
std::string spreadsheet(bool quillory, bool isoDates) {
    std::string text =
        quillory ? "date_local,direction,sender,text,attachments\n" : "date,sender,text\n";
    text.reserve(static_cast<size_t>(kRows) * 64);
    char date[64];
    for (int i = 0; i < kRows; ++i) {
        int minutes = i;
        int day = 1 + (minutes / 1440) % 28, month = 1 + (minutes / (1440 * 28)) % 12;
        int hour = (minutes / 60) % 24, minute = minutes % 60;
        if (isoDates)
            std::snprintf(date, sizeof date, "2025-%02d-%02d %02d:%02d:00", month, day, hour,
                          minute);
        else
            std::snprintf(date, sizeof date, "%02d/%02d/2025 %02d:%02d", day, month, hour, minute);
        text += date;
        if (quillory)
            text += i % 50 == 0 ? " +0200,event," : " +0200,incoming,";
        else
            text += ',';
        text += i % 2 ? "Sam Lee," : "Alex Morgan,";
        text += i % 4 ? "See you at the gate" : "\"Morning, love \"\"x\"\"\nsecond line\"";
        if (quillory) text += i % 10 ? "," : ",IMG_1.jpg; IMG_2.jpg";
        text += '\n';
    }
    return text;
}

void readSpreadsheet(benchmark::State& state, bool quillory, bool isoDates) {
    std::string text = spreadsheet(quillory, isoDates);
    for (auto _ : state) {
        auto result = kinfolio::Importer::csv(text, "bench", DateOrder::dayFirst);
        benchmark::DoNotOptimize(result.items.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void rowsOnly(benchmark::State& state) {
    std::string text = spreadsheet(false, true);
    for (auto _ : state) {
        auto rows = kinfolio::Importer::csvRows(text);
        benchmark::DoNotOptimize(rows.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// The whole road of the file in a scan: reading, hashing, the header test,
// the date-order detection over the text, and the import.
void scanSpreadsheet(benchmark::State& state) {
    std::string folder = (std::filesystem::temp_directory_path() / "kinfolio-csv-bench").string();
    std::filesystem::create_directories(folder);
    kinfolio::writeFileAtomically(folder + "/chat.csv", spreadsheet(false, false));
    for (auto _ : state) {
        auto result = kinfolio::Scanner::scan(folder, DateOrder::automatic, "UTC");
        if (result.sources.size() != 1) state.SkipWithError("the spreadsheet was not read");
        benchmark::DoNotOptimize(result.sources.data());
    }
    std::filesystem::remove_all(folder);
}

}  // namespace

BENCHMARK(scanSpreadsheet)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readSpreadsheet, generic_iso, false, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readSpreadsheet, generic_day_first, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readSpreadsheet, quillory, true, true)->Unit(benchmark::kMillisecond);
BENCHMARK(rowsOnly)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
