#include "layout/export_flow.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <set>

#include "model/evidence.h"
#include "model/files.h"
#include "model/text.h"

namespace kinfolio::ExportFlow {

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

ExportInput input(const ScanResult& scan, const Settings& settings, std::vector<Evidence> items) {
    std::set<std::string> ids;
    for (const auto& item : items)
        ids.insert(item.id());
    ExportInput in;
    for (const auto& source : scan.sources)
        if (isChat(source.kind) &&
            std::any_of(source.items.begin(), source.items.end(),
                        [&](const Evidence& e) { return ids.count(e.id()) > 0; }))
            ++in.conversationCount;
    in.items = std::move(items);
    in.settings = settings;
    in.files = scan.files();
    return in;
}

Written writeParts(const std::vector<std::string>& parts, const Settings& settings,
                   const std::string& target) {
    namespace fs = std::filesystem;
    Written written;
    int n = static_cast<int>(parts.size());
    fs::path path(target);
    std::string base = path.extension() == ".pdf" ? path.stem().string() : path.filename().string();
    for (int i = 0; i < n; ++i) {
        std::string file =
            n == 1 ? target : (path.parent_path() / partName(base, i + 1, n)).string();
        writeFileAtomically(file, parts[i]);
        written.files.push_back(file);
    }
    int64_t limit = byteLimit(settings);
    if (n > 1) written.notes.push_back(splitMessage(n, settings.maxFileMB));
    if (limit >= 1 && std::any_of(parts.begin(), parts.end(), [&](const std::string& p) {
            return static_cast<int64_t>(p.size()) > limit;
        }))
        written.notes.push_back(oversizeMessage(settings.maxFileMB));
    return written;
}

}  // namespace kinfolio::ExportFlow
