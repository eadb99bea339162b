#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/evidence.h"

namespace kinfolio {

enum class SourceKind {
    whatsapp,
    telegram,
    messenger,
    instagram,
    line,
    kakaoTalk,
    quillory,
    chatCSV,
    photos,
    screenshots,
    videos,
    documents,
    emails,  // keep last: kSourceKindCount counts up to it
};
inline constexpr size_t kSourceKindCount = static_cast<size_t>(SourceKind::emails) + 1;

struct Colour {
    double r = 0, g = 0, b = 0;
};

// What the interface shows for a kind of source.
struct SourceKindInfo {
    std::string_view raw;
    bool isChat;
    std::string_view groupTitle;
    std::string_view badgeLabel;
    std::optional<std::string_view> badgeIcon;  // chat kinds only
    std::optional<Colour> badgeColour;
    // One item of a media group ("photo"; the plural adds "s"); chats have none.
    std::string_view itemNoun = {};
};

const SourceKindInfo& info(SourceKind kind);
inline std::string_view rawValue(SourceKind kind) {
    return info(kind).raw;
}
inline bool isChat(SourceKind kind) {
    return info(kind).isChat;
}
std::optional<SourceKind> sourceKindFromRaw(std::string_view raw);
// "Chats" 0, "Photos" 1, "Screenshots" 2, "Videos" 3, "Documents" 4, "Emails" 5.
int groupRank(SourceKind kind);

// One conversation, export or media group.
struct Source {
    std::string id;
    SourceKind kind = SourceKind::whatsapp;
    std::string name;
    std::string detail;
    std::vector<FileRecord> files;  // main file first, then its media
    std::vector<Evidence> items;    // in date order
    std::vector<std::string> notes;

    // Distinct senders of messages, in order of first appearance.
    std::vector<std::string> senders() const;
    // Smallest and largest item date; none without items.
    std::optional<std::pair<Instant, Instant>> dateRange() const;
};

// " · Jan 2025 – Mar 2025", " · Jan 2025" for one month, "" without dates.
std::string dateRangeSummary(std::optional<std::pair<Instant, Instant>> range);

struct ScanResult {
    std::string folder;  // absolute path of the materials folder
    std::vector<Source> sources;
    std::vector<SkippedFile> skipped;

    // Every file of every source by SHA-256; a later record replaces an earlier one.
    std::map<std::string, FileRecord> files() const;
};

// Stable sort by group rank, then name (plain byte order).
void sortSources(std::vector<Source>& sources);
void sortSkipped(std::vector<SkippedFile>& skipped);

}  // namespace kinfolio
