#include "scan/attach.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "model/text.h"
#include "scan/routes.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

bool isRegularFile(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

}  // namespace

void attach(std::vector<Evidence>& items, const Resolver& resolve, ScanContext& ctx,
            std::vector<FileRecord>& files) {
    for (auto& item : items) {
        if (!item.details().attachmentName) continue;
        auto found = resolve(*item.details().attachmentName);
        if (!found || !isRegularFile(*found)) continue;
        std::string path = fs::path(*found).lexically_normal().string();
        ctx.consumed.insert(path);
        if (!isPicture(path)) continue;
        auto record = ctx.recordAttachment(path);
        if (!record) continue;
        if (std::find(files.begin(), files.end(), *record) == files.end()) files.push_back(*record);
        EvidenceDetails& details = item.detailsForWriting();
        details.imageURL = path;
        details.attachmentID = record->sha256;
    }
}

std::optional<std::string> resolveUpward(const ScanContext& ctx, const std::string& start,
                                         const std::string& relative) {
    fs::path rel = fs::path(relative).lexically_normal();
    if (relative.empty() || rel.is_absolute()) return std::nullopt;
    fs::path dir = fs::path(start).lexically_normal();
    std::string root = ctx.folder;
    while (true) {
        std::string candidate = (dir / rel).lexically_normal().string();
        // Never outside the materials folder, whatever "../" the name holds.
        if (startsWith(candidate, root + "/") && isRegularFile(candidate)) return candidate;
        if (dir.string() == root || dir.string().size() <= root.size() || !dir.has_parent_path())
            return std::nullopt;
        dir = dir.parent_path();
    }
}

}  // namespace kinfolio::Scanner
