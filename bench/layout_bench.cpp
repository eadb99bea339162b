#include <benchmark/benchmark.h>

#include "layout/pdf_exporter.h"
#include "model/calendar.h"

namespace kinfolio {
namespace {

// A year of a couple's chat: 10,000 text messages of everyday length
// between two people, about 300 pages once laid out.
ExportInput chat(int count) {
    static const char* texts[] = {
        "Good morning! Did you sleep well?",
        "I just landed, the flight was fine but the queue at passport control took forever.",
        "Can you call me when you are back from work? I want to tell you about the flat.",
        "Miss you \U0001F60A",
        "My mum says hello and asks when you are visiting again. She is already planning "
        "the menu for Sunday lunch and wants to know whether you still like lamb.",
        "ok",
    };
    ExportInput input;
    const std::string file(64, 'a');
    input.files[file] = {"WhatsApp Chat with Jordan.txt", file, 1200000};
    input.settings.ownerName = "Alex";
    input.settings.applicant = "Alex Doe";
    input.settings.partner = "Jordan Roe";
    input.settings.timeZoneID = "Europe/London";
    input.conversationCount = 1;
    Instant start = *Calendar::makeDate(2024, 1, 1, 8);
    for (int i = 0; i < count; ++i) {
        Evidence e;
        e.fileID = file;
        e.position = i + 1;
        e.date = start + i * 3000.0;
        e.sender = i % 3 ? "Alex" : "Jordan";
        e.text = texts[i % 6];
        input.items.push_back(std::move(e));
    }
    return input;
}

void BM_Export10000Messages(benchmark::State& state) {
    ExportInput input = chat(10000);
    int pages = 0;
    for (auto _ : state) {
        Output out = PDFExporter::make(input);
        pages = out.pageCount;
        benchmark::DoNotOptimize(out.data.data());
    }
    state.counters["pages"] = pages;
}
BENCHMARK(BM_Export10000Messages)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_Preview250Items(benchmark::State& state) {
    ExportInput input = chat(10000);
    input.items.resize(250);
    for (auto _ : state) {
        Output out = PDFExporter::make(input);
        benchmark::DoNotOptimize(out.data.data());
    }
}
BENCHMARK(BM_Preview250Items)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
}  // namespace kinfolio

BENCHMARK_MAIN();
