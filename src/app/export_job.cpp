#include "app/export_job.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "model/evidence.h"
#include "model/files.h"
#include "model/text.h"

namespace kinfolio::ExportJob {

std::string baseName(const Settings& settings) {
    std::string base = joinNonEmpty({settings.title, settings.applicant}, " - ");
    if (base.empty()) return "Relationship evidence";
    return replaceAll(base, "/", "-");
}

std::string partName(const std::string& base, int i, int n) {
    return base + " - Part " + std::to_string(i) + " of " + std::to_string(n) + ".pdf";
}

int64_t byteLimit(const Settings& settings) {
    constexpr int64_t kMegabyte = 1'000'000;
    if (settings.maxFileMB <= 0) return 0;
    if (settings.maxFileMB > std::numeric_limits<int64_t>::max() / kMegabyte) {
        return std::numeric_limits<int64_t>::max();
    }
    return settings.maxFileMB * kMegabyte;
}

std::string splitMessage(int parts, int maxFileMB) {
    return "The PDF is split into " + std::to_string(parts) + " files of at most " +
           std::to_string(maxFileMB) + " MB each. Page numbers continue from one file to the next.";
}

std::string oversizeMessage(int maxFileMB) {
    return "One page is larger than " + std::to_string(maxFileMB) +
           " MB on its own, so its file is over the limit. Use fewer or smaller photos on that "
           "page.";
}

ExportInput input(const ScanResult& scan, const Settings& settings,
                  const Selection::ItemRefs& items) {
    ExportInput in;
    in.items.reserve(items.size());
    for (const Evidence* item : items)
        in.items.push_back(*item);
    in.settings = settings;
    in.files = scan.files();
    in.conversationCount = Selection::chatCount(scan, items);
    return in;
}

Written writeParts(const std::vector<std::string>& parts, const Settings& settings,
                   const std::string& target) {
    namespace fs = std::filesystem;
    Written written;
    int n = static_cast<int>(parts.size());
    fs::path path(target);
    std::string base = path.extension() == ".pdf" ? path.stem().string() : path.filename().string();
    std::vector<FileBytes> files;
    for (int i = 0; i < n; ++i) {
        std::string file =
            n == 1 ? target : (path.parent_path() / partName(base, i + 1, n)).string();
        files.push_back({file, parts[i]});
        written.files.push_back(file);
    }
    // All parts or none: a part that cannot be written leaves no others.
    writeFilesAtomically(files);
    int64_t limit = byteLimit(settings);
    if (n > 1) written.notes.push_back(splitMessage(n, settings.maxFileMB));
    if (limit >= 1 && std::any_of(parts.begin(), parts.end(), [&](const std::string& p) {
            return static_cast<int64_t>(p.size()) > limit;
        }))
        written.notes.push_back(oversizeMessage(settings.maxFileMB));
    return written;
}

Result run(const AppServices& services, const ScanResult& scan, const Settings& settings,
           const std::string& target) {
    ExportInput drawn = input(scan, settings, services.selected(scan, settings));
    Output output = services.make(drawn);
    int64_t limit = byteLimit(settings);
    std::vector<std::string> parts = limit >= 1 ? services.split(drawn, output.data, limit)
                                                : std::vector<std::string>{std::move(output.data)};
    return {writeParts(parts, settings, target), output.pageCount};
}

}  // namespace kinfolio::ExportJob
