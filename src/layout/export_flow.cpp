#include "layout/export_flow.h"

#include <limits>

#include "model/evidence.h"
#include "model/text.h"

namespace kinfolio::ExportFlow {

std::string baseName(const Settings& settings) {
    std::string base;
    for (const std::string* name : {&settings.title, &settings.applicant}) {
        if (name->empty()) continue;
        if (!base.empty()) base += " - ";
        base += *name;
    }
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

}  // namespace kinfolio::ExportFlow
