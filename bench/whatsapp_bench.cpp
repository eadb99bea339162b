// Scanning a folder that holds one very large iPhone chat export.
//
//   whatsapp_bench generate [FOLDER]   writes FOLDER/_chat.txt (default bench/data/whatsapp)
//   whatsapp_bench [benchmark flags]   times Scanner::scan of that folder
//
// The chat has 1,000,000 messages, about 3% of them over several lines, with
// two senders, iPhone timestamps and the odd attachment: about 90 MB.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "scan/scanner.h"

namespace {

namespace fs = std::filesystem;

std::string defaultFolder() {
    return (fs::path(__FILE__).parent_path() / "data" / "whatsapp").string();
}

void generate(const std::string& folder, int messages) {
    fs::create_directories(folder);
    std::ofstream out(folder + "/_chat.txt", std::ios::binary);
    std::mt19937 rng(2025);
    static const char* const senders[] = {"Alex Morgan", "Sam Lee"};
    static const char* const words[] = {"the",   "flight",   "was",  "late",  "again",  "love",
                                        "you",   "call",     "me",   "when",  "home",   "dinner",
                                        "photo", "scarf",    "cold", "here",  "Lisbon", "tonight",
                                        "miss",  "tomorrow", "good", "night", "ok",     "see"};
    std::uniform_int_distribution<int> wordCount(3, 17), word(0, 23), percent(0, 99);
    long long t = 1420070400;  // 2015-01-01 00:00:00
    char stamp[64];
    out << "[01/01/2015, 00:00:00] Alex Morgan: \u200EMessages and calls are end-to-end "
           "encrypted.\n";
    for (int i = 1; i < messages; ++i) {
        t += 60 + rng() % 240;
        std::time_t tt = static_cast<std::time_t>(t);
        std::tm tm{};
        gmtime_r(&tt, &tm);
        std::strftime(stamp, sizeof stamp, "[%d/%m/%Y, %H:%M:%S] ", &tm);
        std::string text;
        int n = wordCount(rng);
        for (int w = 0; w < n; ++w)
            text += (w ? " " : "") + std::string(words[word(rng)]);
        int kind = percent(rng);
        if (kind < 3) text += "\n" + std::string(words[word(rng)]) + " and more on a second line";
        if (kind == 99) text = "<attached: " + std::to_string(i) + "-PHOTO.jpg>";
        out << stamp << senders[i % 2] << ": " << text << "\n";
    }
}

void BM_ScanLargeWhatsAppChat(benchmark::State& state) {
    std::string folder = defaultFolder();
    if (!fs::exists(folder + "/_chat.txt")) {
        state.SkipWithError("run `whatsapp_bench generate` first");
        return;
    }
    for (auto _ : state) {
        auto result = kinfolio::Scanner::scan(folder, kinfolio::DateOrder::automatic, "UTC", false);
        benchmark::DoNotOptimize(result);
        if (result.sources.empty() || result.sources[0].items.size() != 1000000)
            state.SkipWithError("the chat was not read whole");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(fs::file_size(folder + "/_chat.txt")));
}
BENCHMARK(BM_ScanLargeWhatsAppChat)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::string(argv[1]) == "generate") {
        std::string folder = argc >= 3 ? argv[2] : defaultFolder();
        generate(folder, 1000000);
        std::printf("%s/_chat.txt: %ju bytes\n", folder.c_str(),
                    static_cast<uintmax_t>(fs::file_size(folder + "/_chat.txt")));
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
