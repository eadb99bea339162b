#include "scan/scanner.h"

#include <dirent.h>

#include <cerrno>
#include <filesystem>

#include "model/parallel.h"
#include "model/text.h"
#include "scan/routes.h"
#include "scan/scan_context.h"
#include "scan/screenshots.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

std::string counted(size_t n, std::string_view singular, std::string_view plural) {
    return std::to_string(n) + " " + std::string(n == 1 ? singular : plural);
}

// The first and last dates of items in date order.
std::optional<std::pair<Instant, Instant>> sortedRange(const std::vector<Evidence>& items) {
    if (items.empty()) return std::nullopt;
    return std::make_pair(items.front().date, items.back().date);
}

// A chat's messages and calls counted, and whether its items are in date
// order, in one look on every core: a chat may hold a million items.
struct ChatTally {
    size_t messages = 0, calls = 0;
    bool inOrder = true;
};

ChatTally tally(const std::vector<Evidence>& items) {
    constexpr size_t kRun = 1 << 16;
    std::vector<ChatTally> runs(Parallel::runCount(items.size(), kRun));
    Parallel::forEachRun(items.size(), kRun, [&](size_t r, size_t from, size_t to) {
        ChatTally& t = runs[r];
        for (size_t i = from; i < to; ++i) {
            const Evidence& item = items[i];
            if (item.kind == ItemKind::message && !item.sender.empty()) ++t.messages;
            if (item.kind == ItemKind::call) ++t.calls;
            if (i > 0 && item.date < items[i - 1].date) t.inOrder = false;
        }
    });
    ChatTally all;
    for (const auto& t : runs) {
        all.messages += t.messages;
        all.calls += t.calls;
        all.inOrder = all.inOrder && t.inOrder;
    }
    return all;
}

// A group of loose media becomes one source: "Photos", "12 photos · Jan 2025".
Source mediaSource(SourceKind kind, MediaGroup& group) {
    const SourceKindInfo& about = info(kind);
    std::string singular(about.itemNoun);
    Source s;
    s.id = about.raw;
    s.kind = kind;
    s.name = about.groupTitle;
    s.files = std::move(group.files);
    s.items = std::move(group.items);
    sortByDate(s.items);
    s.detail =
        counted(s.items.size(), singular, singular + "s") + dateRangeSummary(sortedRange(s.items));
    if (kind == SourceKind::photos && group.estimatedDates > 0) {
        s.notes.push_back(group.estimatedDates == 1
                              ? "1 photo has no camera date; marked as estimated."
                              : std::to_string(group.estimatedDates) +
                                    " photos have no camera date; marked as estimated.");
    }
    return s;
}

}  // namespace

Source chatSource(SourceKind kind, const FileRecord& file, std::vector<FileRecord> media,
                  std::vector<Evidence> items, std::string name, std::vector<std::string> notes) {
    Source s;
    s.id = file.sha256;
    s.kind = kind;
    s.files.push_back(file);
    for (auto& m : media)
        s.files.push_back(std::move(m));
    s.items = std::move(items);
    ChatTally counts = tally(s.items);
    if (!counts.inOrder) sortByDate(s.items);
    s.notes = std::move(notes);

    if (name.empty() || startsWith(name, "_") || asciiLower(name) == "messages") {
        auto senders = s.senders();
        name.clear();
        for (size_t i = 0; i < senders.size() && i < 2; ++i)
            name += (i ? " & " : "") + senders[i];
    }
    s.name = std::move(name);

    std::vector<std::string> parts;
    if (kind != SourceKind::chatCSV) parts.emplace_back(info(kind).badgeLabel);
    parts.push_back(counted(counts.messages, "message", "messages"));
    if (counts.calls > 0) parts.push_back(counted(counts.calls, "call", "calls"));
    std::string detail;
    for (const auto& p : parts)
        detail += (detail.empty() ? "" : " · ") + p;
    s.detail = detail + dateRangeSummary(sortedRange(s.items));
    return s;
}

namespace {

// The folder itself must be there and readable; below it, what cannot be
// read becomes a skipped file.
void checkFolder(const std::string& folder) {
    DIR* dir = ::opendir(folder.c_str());
    if (dir) {
        ::closedir(dir);
        return;
    }
    if (errno == EACCES || errno == EPERM)
        throw EvidenceError::invalid("Kinfolio may not read the folder " + folder +
                                     ". Check its permissions in the file manager.");
    if (errno == ENOTDIR) throw EvidenceError::invalid(folder + " is a file, not a folder.");
    throw EvidenceError::invalid("The folder " + folder +
                                 " is no longer there. It may have been moved, renamed or "
                                 "deleted: choose it again.");
}

}  // namespace

ScanResult scan(const std::string& folder, DateOrder order, const std::string& zone,
                bool recognizeText, const Progress& progress) {
    checkFolder(folder);
    ScanContext ctx;
    ctx.folder = fs::absolute(folder).lexically_normal().string();
    while (ctx.folder.size() > 1 && ctx.folder.back() == '/')
        ctx.folder.pop_back();
    ctx.order = order;
    ctx.zone = zone;
    ctx.recognizeText = recognizeText;
    std::vector<SkippedFile> others;
    ctx.files = listFiles(ctx.folder, others);
    for (auto& other : others)
        ctx.skip(other.path, std::move(other.reason));
    if (ctx.files.size() >= kMaxFiles)
        ctx.skipped.push_back(
            SkippedFile{"…", "Only the first " + std::to_string(kMaxFiles) + " files were read."});

    readExportFolders(ctx);
    // Chats first, loose media after: an export's photos often sort before
    // its chat file ("photos/…" before "result.json").
    std::vector<const std::string*> handling;
    handling.reserve(ctx.files.size());
    for (const auto& path : ctx.files)
        if (!isMedia(path)) handling.push_back(&path);
    for (const auto& path : ctx.files)
        if (isMedia(path)) handling.push_back(&path);
    for (size_t i = 0; i < handling.size(); ++i) {
        const std::string& path = *handling[i];
        if (!ctx.consumed.count(path)) {
            // One file's trouble (memory, a file changed under us) must not
            // end the whole scan: the file is skipped and the rest is read.
            try {
                route(ctx, path);
            } catch (const EvidenceError& e) {
                ctx.skip(path, e.what());  // a sentence already, such as a missing media module
            } catch (const std::exception&) {
                ctx.skip(path, "Could not be read.");
            }
        }
        if (progress) progress(i + 1, handling.size());
    }

    for (auto& [kind, group] : ctx.media)
        if (!group.items.empty()) ctx.sources.push_back(mediaSource(kind, group));

    sortSources(ctx.sources);
    sortSkipped(ctx.skipped);
    ScanResult result{ctx.folder, std::move(ctx.sources), std::move(ctx.skipped)};
    // After every file, so that all screenshots are read at once on every core.
    if (recognizeText) recognizeScreenshots(result);
    return result;
}

}  // namespace kinfolio::Scanner
