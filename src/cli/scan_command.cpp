#include <filesystem>

#include "cli/commands.h"
#include "cli/json_output.h"
#include "scan/scanner.h"
#include "scan/screenshots.h"

namespace kinfolio::cli {

namespace {

void printScan(std::ostream& out, const ScanResult& scan) {
    out << "Materials folder: " << scan.folder << "\n";
    if (scan.sources.empty())
        out << "\nNothing Kinfolio can read here. Add chat exports, photos, videos, PDF "
               "documents or emails to the folder, then scan again.\n";
    std::string_view group;
    for (const auto& s : scan.sources) {
        if (info(s.kind).groupTitle != group) {
            group = info(s.kind).groupTitle;
            out << "\n" << group << "\n";
        }
        out << "  " << (s.name.empty() ? "(no name)" : s.name) << "\n    " << s.detail << "\n";
        for (const auto& note : s.notes)
            out << "    Note: " << note << "\n";
    }
    if (!scan.skipped.empty()) {
        out << "\nSkipped files\n";
        for (const auto& s : scan.skipped)
            out << "  " << s.path << "\n    " << s.reason << "\n";
    }
}

int runScan(Invocation& inv) {
    std::string folder;
    if (!takeFolder(inv, folder)) return 2;
    ScanResult scan = scanFolder(inv, folder);
    if (inv.json)
        writeJson(inv.out, scan);
    else
        printScan(inv.out, scan);
    return finish(inv, 0);
}

}  // namespace

ScanResult scanFolder(Invocation& inv, const std::string& folder) {
    ScanResult scan = Scanner::scan(folder, inv.settings.dateOrder, inv.settings.timeZoneID, false,
                                    progressReport(inv, "Reading files"));
    if (inv.readScreenshotText) {
        Scanner::Progress progress;
        // Each screenshot takes a moment, so every one is reported.
        if (inv.showProgress)
            progress = [&inv](size_t read, size_t total) {
                inv.err << "\rReading text in screenshots: " << read << " of " << total
                        << (read == total ? "\n" : "") << std::flush;
            };
        Scanner::recognizeScreenshots(scan, progress);
    }
    return scan;
}

std::function<void(size_t, size_t)> progressReport(Invocation& inv, std::string label) {
    if (!inv.showProgress) return {};
    return [&inv, label](size_t done, size_t total) {
        if (done == total || done % 50 == 0)
            inv.err << "\r" << label << ": " << done << " of " << total
                    << (done == total ? "\n" : "") << std::flush;
    };
}

bool takeFolder(Invocation& inv, std::string& folder) {
    if (inv.arguments.size() != 1) {
        inv.err << "kinfolio-cli: give exactly one materials folder.\n";
        return false;
    }
    folder = inv.arguments[0];
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) {
        inv.err << "kinfolio-cli: " << folder << " is not a folder.\n";
        return false;
    }
    return true;
}

Command scanCommand() {
    return Command{"scan", "scan FOLDER [--json]",
                   "Read a materials folder and list its sources and skipped files.",
                   "Lists every chat, e-mail and media group found, with its details and notes,\n"
                   "then every file that was not used and why. Nothing in the folder is changed.\n"
                   "  --json   print one JSON object with every source, item and skipped file\n",
                   runScan};
}

}  // namespace kinfolio::cli
