#include "scan/attach.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "model/files.h"
#include "model/parallel.h"
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

// The real paths of the folders an attachment may lie in: the materials
// folder and the private cache where ZIPs are unpacked.
std::vector<std::string> realRoots(const ScanContext& ctx) {
    std::vector<std::string> roots = {ctx.folder};
    try {
        roots.push_back(privateCacheDirectory());
    } catch (const EvidenceError&) {
    }
    std::vector<std::string> real;
    for (const auto& root : roots)
        if (auto r = realPath(root)) real.push_back(*r);
    return real;
}

// Whether the file, every link on its way followed, still lies inside one
// of the roots: a folder inside the export that links elsewhere must not
// lead the scan out.
bool staysInside(const std::vector<std::string>& roots, const std::string& path) {
    auto real = realPath(path);
    if (!real) return false;
    for (const auto& root : roots)
        if (startsWith(*real, root + "/")) return true;
    return false;
}

}  // namespace

std::vector<size_t> itemsNamingFiles(std::vector<Evidence>& items,
                                     const std::function<void(Evidence&)>& alsoDo) {
    // A million items are looked through on every core.
    constexpr size_t kRun = 1 << 15;
    std::vector<std::vector<size_t>> namedIn(Parallel::runCount(items.size(), kRun));
    Parallel::forEachRun(items.size(), kRun, [&](size_t r, size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            if (alsoDo) alsoDo(items[i]);
            if (items[i].details().attachmentName) namedIn[r].push_back(i);
        }
    });
    std::vector<size_t> named;
    for (const auto& run : namedIn)
        named.insert(named.end(), run.begin(), run.end());
    return named;
}

void attach(std::vector<Evidence>& items, const Resolver& resolve, ScanContext& ctx,
            std::vector<FileRecord>& files) {
    attach(items, itemsNamingFiles(items), resolve, ctx, files);
}

void attach(std::vector<Evidence>& items, const std::vector<size_t>& named, const Resolver& resolve,
            ScanContext& ctx, std::vector<FileRecord>& files) {
    if (named.empty()) return;
    // Looking a name up on disk is a few system calls; a large chat names
    // thousands of files, so they are looked up on every core.
    const std::vector<std::string> roots = realRoots(ctx);
    std::vector<std::optional<std::string>> found(named.size());
    Parallel::forEachRun(named.size(), 256, [&](size_t, size_t from, size_t to) {
        for (size_t k = from; k < to; ++k) {
            auto path = resolve(*items[named[k]].details().attachmentName);
            if (path && isRegularFile(*path) && staysInside(roots, *path))
                found[k] = fs::path(*path).lexically_normal().string();
        }
    });
    for (size_t k = 0; k < named.size(); ++k) {
        if (!found[k]) continue;
        const std::string& path = *found[k];
        ctx.consumed.insert(path);
        if (!isPicture(path)) continue;
        auto record = ctx.recordAttachment(path);
        if (!record) continue;
        if (std::find(files.begin(), files.end(), *record) == files.end()) files.push_back(*record);
        EvidenceDetails& details = items[named[k]].detailsForWriting();
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
            staysInside(realRoots(ctx), candidate))
            return candidate;
        if (dir.string() == root || dir.string().size() <= root.size() || !dir.has_parent_path())
            return std::nullopt;
        dir = dir.parent_path();
    }
}

}  // namespace kinfolio::Scanner
