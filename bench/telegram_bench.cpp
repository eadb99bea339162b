// Scanning a folder that holds a large whole-account Telegram export.
//
// The export is generated once into bench/data/telegram-account/ (git-ignored)
// and reused: about 200 MB in 50 chats, written the way Telegram Desktop
// writes it (one space per level of indentation, text entities, reply and
// edit fields, photos, stickers, voice messages and calls).
//
// Goals: under 1.5 s per scan, and a peak resident size under twice the
// file's size; measure the latter with
//   /usr/bin/time -v build/bench/bin/telegram_bench
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "scan/scanner.h"

namespace {

namespace fs = std::filesystem;
using namespace kinfolio;

constexpr size_t kTargetBytes = 200'000'000;
constexpr int kChats = 50;

const char* kWords[] = {"love",  "you",    "flight", "home",   "tonight", "dinner",  "call",
                        "miss",  "soon",   "photo",  "mum",    "visa",    "tickets", "weekend",
                        "sleep", "coffee", "work",   "landed", "raining", "the",     "and",
                        "we",    "should", "really", "going",  "café",    "❤️",  "😂"};

struct Generator {
    std::mt19937 random{20250601};
    std::ofstream out;
    size_t written = 0;
    long id = 0;
    long long time = 1'704'067'200;  // 1 January 2024 UTC

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

    void put(const std::string& s) {
        out << s;
        written += s.size();
    }

    std::string sentence() {
        int words = 2 + pick(4) * pick(6);
        std::string s;
        for (int i = 0; i < words; ++i)
            s += (i ? " " : "") + std::string(kWords[pick(std::size(kWords))]);
        return s + (pick(3) ? "." : "?");
    }

    static std::string date(long long unix) {
        time_t t = static_cast<time_t>(unix);
        char buf[32];
        std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%S", std::gmtime(&t));
        return buf;
    }

    void message(const std::string& pad, const std::string& from, long userID) {
        time += 30 + pick(3600);
        std::string m = pad + "{\n";
        std::string in = pad + " ";
        m += in + "\"id\": " + std::to_string(++id) + ",\n";
        int kind = pick(200);
        bool call = kind == 0;
        m += in + "\"type\": \"" + (call ? "service" : "message") + "\",\n";
        m += in + "\"date\": \"" + date(time) + "\",\n";
        m += in + "\"date_unixtime\": \"" + std::to_string(time) + "\",\n";
        if (call) {
            m += in + "\"actor\": \"" + from + "\",\n";
            m += in + "\"actor_id\": \"user" + std::to_string(userID) + "\",\n";
            m += in + "\"action\": \"phone_call\",\n";
            if (pick(4) == 0) m += in + "\"discard_reason\": \"missed\",\n";
            m += in + "\"duration_seconds\": " + std::to_string(pick(3000)) + ",\n";
            m += in + "\"text\": \"\",\n" + in + "\"text_entities\": []\n" + pad + "}";
            put(m);
            return;
        }
        m += in + "\"from\": \"" + from + "\",\n";
        m += in + "\"from_id\": \"user" + std::to_string(userID) + "\",\n";
        if (pick(10) == 0)
            m += in + "\"reply_to_message_id\": " + std::to_string(id - 1 - pick(5)) + ",\n";
        if (pick(15) == 0) {
            m += in + "\"edited\": \"" + date(time + 60) + "\",\n";
            m += in + "\"edited_unixtime\": \"" + std::to_string(time + 60) + "\",\n";
        }
        std::string text = sentence();
        if (kind < 12) {
            m += in + "\"photo\": \"chats/chat_" + std::to_string(userID % 1000) +
                 "/photos/photo_" + std::to_string(id) + "@" + date(time) + ".jpg\",\n";
            m += in + "\"width\": 1280,\n" + in + "\"height\": 960,\n";
            if (pick(2)) text.clear();
        } else if (kind < 18) {
            m += in + "\"file\": \"chats/chat_1/stickers/sticker_" + std::to_string(pick(99)) +
                 ".webp\",\n";
            m += in + "\"thumbnail\": \"chats/chat_1/stickers/sticker.webp_thumb.jpg\",\n";
            m += in + "\"media_type\": \"sticker\",\n" + in + "\"sticker_emoji\": \"❤️\",\n";
            m += in + "\"width\": 512,\n" + in + "\"height\": 512,\n";
            text.clear();
        } else if (kind < 22) {
            m += in + "\"file\": \"chats/chat_1/voice_messages/audio_" + std::to_string(id) +
                 ".ogg\",\n";
            m += in + "\"media_type\": \"voice_message\",\n" + in +
                 "\"mime_type\": \"audio/ogg\",\n";
            m += in + "\"duration_seconds\": " + std::to_string(1 + pick(90)) + ",\n";
            text.clear();
        }
        if (!text.empty() && pick(8) == 0) {
            // Formatted text: an array of plain strings and entity objects.
            std::string bold = sentence();
            m += in + "\"text\": [\n" + in + " \"" + text + " \",\n" + in + " {\n" + in +
                 "  \"type\": \"bold\",\n" + in + "  \"text\": \"" + bold + "\"\n" + in + " }\n" +
                 in + "],\n";
            m += in + "\"text_entities\": [\n" + in + " {\n" + in + "  \"type\": \"plain\",\n" +
                 in + "  \"text\": \"" + text + " \"\n" + in + " },\n" + in + " {\n" + in +
                 "  \"type\": \"bold\",\n" + in + "  \"text\": \"" + bold + "\"\n" + in + " }\n" +
                 in + "]\n";
        } else {
            m += in + "\"text\": \"" + text + "\",\n";
            m += in + "\"text_entities\": [";
            if (!text.empty())
                m += "\n" + in + " {\n" + in + "  \"type\": \"plain\",\n" + in + "  \"text\": \"" +
                     text + "\"\n" + in + " }\n" + in;
            m += "]\n";
        }
        put(m + pad + "}");
    }

    void write(const std::string& path) {
        out.open(path, std::ios::binary);
        put("{\n \"about\": \"Here is the data you requested from Telegram.\",\n");
        put(" \"personal_information\": {\n  \"user_id\": 1000001,\n  \"first_name\": "
            "\"Alex\",\n  \"last_name\": \"Morgan\"\n },\n");
        put(" \"chats\": {\n  \"about\": \"This page lists all chats from this export.\",\n"
            "  \"list\": [\n");
        for (int c = 0; c < kChats; ++c) {
            // Chat sizes vary: a few long conversations and many short ones.
            size_t share = kTargetBytes * (c % 10 == 0 ? 6 : 1) / (kChats + 5 * kChats / 10);
            size_t until = written + share;
            std::string name =
                c % 7 == 3 ? "Family " + std::to_string(c) : "Sam " + std::to_string(c);
            put(std::string(c ? ",\n" : "") + "   {\n    \"name\": \"" + name +
                "\",\n    \"type\": \"" + (c % 7 == 3 ? "private_group" : "personal_chat") +
                "\",\n    \"id\": " + std::to_string(2000 + c) + ",\n    \"messages\": [\n");
            bool first = true;
            while (written < until) {
                if (!first) put(",\n");
                first = false;
                bool mine = pick(2);
                message("     ", mine ? "Alex Morgan" : name, mine ? 1000001 : 2000 + c);
            }
            put("\n    ]\n   }");
        }
        put("\n  ]\n }\n}\n");
    }
};

const std::string& exportFolder() {
    static const std::string folder = [] {
        fs::path dir = fs::path(__FILE__).parent_path() / "data" / "telegram-account";
        fs::path file = dir / "result.json";
        std::error_code ec;
        auto size = fs::file_size(file, ec);
        if (ec || size < kTargetBytes) {
            fs::create_directories(dir);
            Generator().write(file.string());
        }
        return dir.string();
    }();
    return folder;
}

void BM_ScanWholeAccountExport(benchmark::State& state) {
    const std::string& folder = exportFolder();
    size_t bytes = fs::file_size(fs::path(folder) / "result.json");
    for (auto _ : state) {
        ScanResult scan = Scanner::scan(folder, DateOrder::automatic, "UTC");
        if (scan.sources.size() != kChats) state.SkipWithError("not every chat was read");
        benchmark::DoNotOptimize(scan);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
// One scan per repetition: the peak resident size of a run is then that of
// one scan. For the median: --benchmark_repetitions=5.
BENCHMARK(BM_ScanWholeAccountExport)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
