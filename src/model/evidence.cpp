#include "model/evidence.h"

#include <algorithm>
#include <array>

namespace kinfolio {

namespace {
constexpr std::array<std::string_view, kItemKindCount> kItemKindNames = {
    "message", "call", "photo", "screenshot", "video", "document", "email"};
static_assert(!kItemKindNames.back().empty(), "every item kind needs its name");
}  // namespace

std::string_view rawValue(ItemKind kind) {
    return kItemKindNames[static_cast<size_t>(kind)];
}

std::optional<ItemKind> itemKindFromRaw(std::string_view raw) {
    for (size_t i = 0; i < kItemKindNames.size(); ++i)
        if (kItemKindNames[i] == raw) return static_cast<ItemKind>(i);
    return std::nullopt;
}

Evidence::Evidence(const Evidence& other)
    : kind(other.kind),
      dateIsEstimated(other.dateIsEstimated),
      date(other.date),
      sender(other.sender),
      text(other.text),
      fileID(other.fileID),
      position(other.position),
      details_(other.details_ ? std::make_unique<EvidenceDetails>(*other.details_) : nullptr) {}

Evidence& Evidence::operator=(const Evidence& other) {
    if (this != &other) *this = Evidence(other);
    return *this;
}

EvidenceDetails& Evidence::detailsForWriting() {
    if (!details_) details_ = std::make_unique<EvidenceDetails>();
    return *details_;
}

bool Evidence::operator==(const Evidence& other) const {
    return kind == other.kind && dateIsEstimated == other.dateIsEstimated && date == other.date &&
           sender == other.sender && text == other.text && fileID == other.fileID &&
           position == other.position && details() == other.details();
}

std::string Evidence::id() const {
    return fileID + ":" + std::to_string(position);
}

void sortByDate(std::vector<Evidence>& items) {
    auto earlier = [](const Evidence& a, const Evidence& b) { return a.date < b.date; };
    // Chats arrive in date order; a stable sort would still borrow a buffer
    // of half a million items for a large one.
    if (std::is_sorted(items.begin(), items.end(), earlier)) return;
    std::stable_sort(items.begin(), items.end(), earlier);
}

void sortByDateAndPosition(std::vector<Evidence>& items) {
    std::stable_sort(items.begin(), items.end(), [](const Evidence& a, const Evidence& b) {
        if (a.date != b.date) return a.date < b.date;
        return a.position < b.position;
    });
}

void sortByDateFileAndPosition(std::vector<Evidence>& items) {
    std::stable_sort(items.begin(), items.end(), [](const Evidence& a, const Evidence& b) {
        if (a.date != b.date) return a.date < b.date;
        if (a.fileID != b.fileID) return a.fileID < b.fileID;
        return a.position < b.position;
    });
}

void sortByPosition(std::vector<Evidence>& items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const Evidence& a, const Evidence& b) { return a.position < b.position; });
}

}  // namespace kinfolio
