// Mailbox reading. A generated mailbox of 100,000 messages is scanned as a
// user's folder would be; `email_bench --generate FILE MEGABYTES [attachments]`
// writes a large mailbox for measuring memory with /usr/bin/time -v.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "importers/email.h"
#include "scan/scanner.h"

namespace {

namespace fs = std::filesystem;

// A mix of what real mailboxes hold: plain messages, HTML alternatives in
// quoted-printable, encoded subjects, and (optionally) base64 attachments.
std::string message(int i, bool attachment) {
    std::string day = std::to_string(1 + i % 28), hour = std::to_string(i % 24);
    std::string out =
        "From sender" + std::to_string(i % 7) + "@example.com Mon Jan  6 09:00:00 2025\n";
    out += "From: Sam Lee <sam@example.com>\nTo: Alex Morgan <alex@example.com>\n";
    out += "Date: Mon, " + day + " Mar 2025 " + hour + ":05:00 +0100\n";
    out += i % 3 == 0
               ? "Subject: =?UTF-8?B?V2Vla2VuZCBwbGFucyDinJM=?=\n"
               : "Subject: Re: our plans for the\n weekend, number " + std::to_string(i) + "\n";
    out += "Message-ID: <" + std::to_string(i) + "@example.com>\nMIME-Version: 1.0\n";
    std::string words;
    for (int k = 0; k < 12; ++k)
        words += "We could take the early train and be there before lunch, then walk.\n";
    words += ">From the station it is not far.\n";
    if (!attachment && i % 2 == 0) {
        out += "Content-Type: text/plain; charset=utf-8\n\n" + words;
        return out;
    }
    out += "Content-Type: multipart/mixed; boundary=\"b" + std::to_string(i) + "\"\n\n";
    out += "--b" + std::to_string(i) + "\nContent-Type: multipart/alternative; boundary=alt\n\n";
    out += "--alt\nContent-Type: text/html; charset=utf-8\n\n<p>" + words + "</p>\n";
    out +=
        "--alt\nContent-Type: text/plain; charset=iso-8859-1\n"
        "Content-Transfer-Encoding: quoted-printable\n\nCaf=E9 at eight? " +
        words + "--alt--\n";
    if (attachment) {
        out += "--b" + std::to_string(i) +
               "\nContent-Type: image/jpeg\nContent-Transfer-Encoding: base64\n\n";
        for (int line = 0; line < 600; ++line)
            out += std::string(76, 'A') + "\n";
    }
    out += "--b" + std::to_string(i) + "--\n";
    return out;
}

void writeMailbox(const std::string& path, size_t bytes, bool attachments) {
    std::ofstream out(path, std::ios::binary);
    size_t written = 0;
    for (int i = 0; written < bytes; ++i) {
        std::string m = message(i, attachments);
        out << m;
        written += m.size();
    }
}

struct Folder {
    fs::path path;
    explicit Folder(int messages) {
        std::string pattern = (fs::temp_directory_path() / "kinfolio-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) std::abort();
        path = pattern;
        std::ofstream out(path / "archive.mbox", std::ios::binary);
        for (int i = 0; i < messages; ++i)
            out << message(i, false);
    }
    ~Folder() { fs::remove_all(path); }
};

void BM_ScanMailbox100k(benchmark::State& state) {
    Folder folder(100000);
    for (auto _ : state) {
        auto result = kinfolio::Scanner::scan(folder.path.string(), kinfolio::DateOrder::automatic,
                                              "UTC", false);
        if (result.sources.size() != 1 || result.sources[0].items.size() != 100000)
            state.SkipWithError("the mailbox was not read whole");
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(fs::file_size(folder.path / "archive.mbox")));
}
BENCHMARK(BM_ScanMailbox100k)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_EmailItem(benchmark::State& state) {
    std::string text = message(1, false);
    std::string m = text.substr(text.find('\n') + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(kinfolio::Importer::email(m, "id", 1));
}
BENCHMARK(BM_EmailItem);

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 4 && std::strcmp(argv[1], "--generate") == 0) {
        bool attachments = argc >= 5 && std::strcmp(argv[4], "attachments") == 0;
        writeMailbox(argv[2], std::stoull(argv[3]) * 1000000, attachments);
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
