// Reading PDF documents as the scan does (open, first page's text, first
// date, category) over 500 generated documents of 1 to 20 pages, against
// `pdftotext -f 1 -l 1` run once per file over the same files. Both run on
// one thread.
//
//   document_bench [benchmark flags]
//
// The documents are made once under /tmp/kinfolio-bench/documents. The run
// ends with the ratio of the medians; the goal is at most 1.5.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_support.h"
#include "media/documents.h"
#include "model/files.h"
#include "support/documents.h"

namespace {

namespace fs = std::filesystem;
using namespace kinfolio;

const std::string kRoot = "/tmp/kinfolio-bench/documents";
constexpr int kDocuments = 500;

// A first page as the kinds of document a couple collects write one: a
// booking, a statement of many lines, a lease, a certificate, a letter.
std::string firstPage(int i) {
    std::string day = std::to_string(1 + i % 28);
    std::string year = std::to_string(2019 + i % 7);
    switch (i % 5) {
        case 0:
            return "Booking confirmation\nBooking reference NS" + std::to_string(4000 + i) +
                   "\nIssued: " + day + " March " + year + "\nDeparture " + day + " April " + year +
                   " 07:25 London Gatwick (LGW) to Bergen (BGO)\nPassengers: 2 adults";
        case 1: {
            std::string text = "Monthly statement\nAccount number 12345678  Sort code 01-02-03\n";
            for (int line = 0; line < 40; ++line)
                text += std::to_string(1 + line % 28) + "/0" + std::to_string(1 + i % 9) + "/" +
                        year + "  Card payment  TESCO STORES " + std::to_string(line) +
                        "   12.40   1,204.50\n";
            return text;
        }
        case 2:
            return "Assured Shorthold Tenancy Agreement\nThis agreement is made on " + day +
                   " December " + year +
                   " between the landlord and the tenants named below.\nRent: £1,150 per "
                   "calendar month.";
        case 3:
            return "Certificate of Marriage\nRegistration district: Leeds\nWhen married: " + day +
                   " June " + year + "\nNames and surnames: Maya Okafor, Jonas Berg";
        default:
            return "Dear Ms Okafor,\nThank you for your letter of " + day + "/" +
                   std::to_string(1 + i % 12) + "/" + year +
                   ". We will reply within ten working days.\nYours sincerely";
    }
}

std::vector<std::string> documents() {
    fs::create_directories(kRoot);
    std::vector<std::string> paths;
    for (int i = 0; i < kDocuments; ++i) {
        std::string path = kRoot + "/document-" + std::to_string(i) + ".pdf";
        paths.push_back(path);
        if (fs::exists(path)) continue;
        std::vector<std::string> pages(1 + i % 20, "Terms and conditions, page continued.");
        pages.front() = firstPage(i);
        writeFileAtomically(path, testing::makePDF(testing::PDFSpec(pages, "2024-01-01T00:00:00")));
    }
    return paths;
}

void BM_ReadDocuments(benchmark::State& state) {
    auto files = documents();
    for (auto _ : state) {
        size_t dated = 0;
        for (const auto& path : files) {
            auto file = MappedFile::open(path);
            auto info = file ? Scanner::documentInfo(file->bytes()) : std::nullopt;
            if (!info) {
                state.SkipWithError("a document did not open");
                break;
            }
            if (Scanner::firstDate(info->firstPageText, DateOrder::automatic)) ++dated;
            benchmark::DoNotOptimize(Scanner::category(info->firstPageText, path));
        }
        if (dated != files.size()) state.SkipWithError("a document was not dated");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kDocuments);
}
BENCHMARK(BM_ReadDocuments)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5);

void BM_PdftotextCommand(benchmark::State& state) {
    auto files = documents();
    std::string list = kRoot + "/../documents.txt";
    {
        std::FILE* f = std::fopen(list.c_str(), "w");
        for (const auto& p : files)
            std::fprintf(f, "%s\n", p.c_str());
        std::fclose(f);
    }
    // One process per file, one at a time, as the scan reads one at a time.
    std::string command = "xargs -I{} pdftotext -q -f 1 -l 1 {} /dev/null < " + list;
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("pdftotext failed");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kDocuments);
}
BENCHMARK(BM_PdftotextCommand)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    bench::MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double ours = reporter.median("BM_ReadDocuments"),
           theirs = reporter.median("BM_PdftotextCommand");
    if (ours > 0 && theirs > 0)
        std::printf("\nreading / pdftotext, medians: %.0f ms / %.0f ms = %.2f (goal <= 1.5)\n",
                    ours, theirs, ours / theirs);
    benchmark::Shutdown();
}
