#include "scan/attach.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "model/files.h"
#include "model/text.h"
#include "scan/routes.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

bool isRegularFile(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::optional<std::string> realPath(const std::string& path) {
    char* real = ::realpath(path.c_str(), nullptr);
    if (!real) return std::nullopt;
    std::string out(real);
    std::free(real);
    return out;
}

// Whether the file, every link on its way followed, still lies inside the
// materials folder or the private cache where ZIPs are unpacked: a folder
// inside the export that links elsewhere must not lead the scan out.
bool staysInside(const ScanContext& ctx, const std::string& path) {
    auto real = realPath(path);
    if (!real) return false;
    std::vector<std::string> roots = {ctx.folder};
    try {
        roots.push_back(privateCacheDirectory());
    } catch (const EvidenceError&) {
    }
    for (const auto& root : roots)
        if (auto realRoot = realPath(root); realRoot && startsWith(*real, *realRoot + "/"))
            return true;
    return false;
}

}  // namespace

void attach(std::vector<Evidence>& items, const Resolver& resolve, ScanContext& ctx,
            std::vector<FileRecord>& files) {
    for (auto& item : items) {
        if (!item.details().attachmentName) continue;
        auto found = resolve(*item.details().attachmentName);
        if (!found || !isRegularFile(*found) || !staysInside(ctx, *found)) continue;
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
        if (startsWith(candidate, root + "/") && isRegularFile(candidate) &&
            staysInside(ctx, candidate))
            return candidate;
        if (dir.string() == root || dir.string().size() <= root.size() || !dir.has_parent_path())
            return std::nullopt;
        dir = dir.parent_path();
    }
}

}  // namespace kinfolio::Scanner
