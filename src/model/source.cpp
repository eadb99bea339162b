#include "model/source.h"

#include <algorithm>
#include <array>
#include <set>

#include "model/calendar.h"

namespace kinfolio {

namespace {

constexpr std::array<SourceKindInfo, kSourceKindCount> kKinds = {{
    {"whatsapp", true, "Chats", "WhatsApp", "phone.fill", Colour{0.15, 0.83, 0.4}},
    {"telegram", true, "Chats", "Telegram", "paperplane.fill", Colour{0.16, 0.67, 0.93}},
    {"messenger", true, "Chats", "Messenger", "bolt.fill", Colour{0.0, 0.52, 1.0}},
    {"instagram", true, "Chats", "Instagram", "camera.fill", Colour{0.88, 0.19, 0.42}},
    {"line", true, "Chats", "LINE", "bubble.left.fill", Colour{0.02, 0.78, 0.33}},
    // Kakao's yellow darkened to a mustard brown that still reads on white.
    {"kakaoTalk", true, "Chats", "KakaoTalk", "bubble.left.and.bubble.right.fill",
     Colour{0.55, 0.4, 0.0}},
    {"quillory", true, "Chats", "iMessage", "message.fill", Colour{0.2, 0.78, 0.35}},
    {"chatCSV", true, "Chats", "Chats", "tablecells", Colour{0.45, 0.45, 0.5}},
    {"photos", false, "Photos", "Photos", std::nullopt, std::nullopt, "photo"},
    {"screenshots", false, "Screenshots", "Screenshots", std::nullopt, std::nullopt, "screenshot"},
    {"videos", false, "Videos", "Videos", std::nullopt, std::nullopt, "video"},
    {"documents", false, "Documents", "Documents", std::nullopt, std::nullopt, "document"},
    {"emails", false, "Emails", "Emails", std::nullopt, std::nullopt, "email"},
}};
static_assert(!kKinds.back().raw.empty(), "every source kind needs its line");

constexpr std::array<std::string_view, 6> kGroupTitles = {"Chats",  "Photos",    "Screenshots",
                                                          "Videos", "Documents", "Emails"};

}  // namespace

const SourceKindInfo& info(SourceKind kind) {
    return kKinds[static_cast<size_t>(kind)];
}

std::optional<SourceKind> sourceKindFromRaw(std::string_view raw) {
    for (size_t i = 0; i < kKinds.size(); ++i)
        if (kKinds[i].raw == raw) return static_cast<SourceKind>(i);
    return std::nullopt;
}

int groupRank(SourceKind kind) {
    auto title = info(kind).groupTitle;
    auto it = std::find(kGroupTitles.begin(), kGroupTitles.end(), title);
    return static_cast<int>(it - kGroupTitles.begin());
}

std::vector<std::string> Source::senders() const {
    std::vector<std::string> result;
    std::set<std::string> seen;
    for (const auto& item : items) {
        if (item.kind != ItemKind::message || item.sender.empty()) continue;
        if (seen.insert(item.sender).second) result.push_back(item.sender);
    }
    return result;
}

std::optional<std::pair<Instant, Instant>> Source::dateRange() const {
    if (items.empty()) return std::nullopt;
    auto [lo, hi] =
        std::minmax_element(items.begin(), items.end(),
                            [](const Evidence& a, const Evidence& b) { return a.date < b.date; });
    return std::make_pair(lo->date, hi->date);
}

std::string dateRangeSummary(std::optional<std::pair<Instant, Instant>> range) {
    if (!range) return "";
    std::string first = Calendar::format(range->first, "MMM yyyy");
    std::string last = Calendar::format(range->second, "MMM yyyy");
    std::string text = " · " + first;
    if (last != first) text += " – " + last;
    return text;
}

std::map<std::string, FileRecord> ScanResult::files() const {
    std::map<std::string, FileRecord> result;
    for (const auto& source : sources)
        for (const auto& file : source.files)
            result[file.sha256] = file;
    return result;
}

void sortSources(std::vector<Source>& sources) {
    std::stable_sort(sources.begin(), sources.end(), [](const Source& a, const Source& b) {
        int ra = groupRank(a.kind), rb = groupRank(b.kind);
        if (ra != rb) return ra < rb;
        return a.name < b.name;
    });
}

void sortSkipped(std::vector<SkippedFile>& skipped) {
    std::stable_sort(skipped.begin(), skipped.end(),
                     [](const SkippedFile& a, const SkippedFile& b) { return a.path < b.path; });
}

}  // namespace kinfolio
