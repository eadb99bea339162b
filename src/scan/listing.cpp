#include <dirent.h>
#include <sys/stat.h>
#include <unicode/coll.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>

#include "model/text.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

namespace {

// Depth-first, each folder's entries in byte order, so the listing (and so
// which files fall under the cap) is the same on every run. Links and
// entries that are no regular file (pipes, devices, sockets) are never
// opened: they go to `others` with their reason.
void walk(const std::string& dir, std::vector<std::string>& out, std::vector<SkippedFile>& others) {
    DIR* d = ::opendir(dir.c_str());
    if (!d) return;
    std::vector<std::pair<std::string, unsigned char>> entries;
    while (dirent* e = ::readdir(d)) {
        if (e->d_name[0] == '.') continue;  // hidden, and "." and ".."
        entries.emplace_back(e->d_name, e->d_type);
    }
    ::closedir(d);
    std::sort(entries.begin(), entries.end());
    for (auto& [name, type] : entries) {
        if (out.size() >= kMaxFiles) return;
        std::string path = dir + "/" + name;
        if (type == DT_UNKNOWN) {
            // Some file systems do not say; ask without following a link.
            struct stat st {};
            if (::lstat(path.c_str(), &st) != 0) continue;
            type = S_ISDIR(st.st_mode)   ? DT_DIR
                   : S_ISREG(st.st_mode) ? DT_REG
                   : S_ISLNK(st.st_mode) ? DT_LNK
                                         : DT_FIFO;
        }
        if (type == DT_DIR)
            walk(path, out, others);
        else if (type == DT_REG)
            out.push_back(std::move(path));
        else if (type == DT_LNK)
            others.push_back({std::move(path), kLinkReason});
        else
            others.push_back({std::move(path), kSpecialReason});
    }
}

}  // namespace

std::vector<std::string> listFiles(const std::string& folder) {
    std::vector<SkippedFile> others;
    return listFiles(folder, others);
}

std::vector<std::string> listFiles(const std::string& folder, std::vector<SkippedFile>& others) {
    std::string root = folder;
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    std::vector<std::string> files;
    walk(root, files, others);

    // The file manager's order: case-insensitive, digit runs by value.
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) return files;
    collator->setStrength(icu::Collator::SECONDARY);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);

    std::vector<std::string> keys(files.size());
    for (size_t i = 0; i < files.size(); ++i) {
        icu::UnicodeString u = toUnicode(files[i]);
        int32_t n = collator->getSortKey(u, nullptr, 0);
        keys[i].resize(static_cast<size_t>(n));
        collator->getSortKey(u, reinterpret_cast<uint8_t*>(keys[i].data()), n);
    }
    std::vector<size_t> order(files.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return std::strcmp(keys[a].c_str(), keys[b].c_str()) < 0;
    });
    std::vector<std::string> sorted;
    sorted.reserve(files.size());
    for (size_t i : order)
        sorted.push_back(std::move(files[i]));
    return sorted;
}

}  // namespace kinfolio::Scanner
