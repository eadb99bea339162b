#include "model/evidence.h"

#include <algorithm>
#include <array>

namespace kinfolio {

namespace {
constexpr std::array<std::string_view, 7> kItemKindNames = {
    "message", "call", "photo", "screenshot", "video", "document", "email"};
}

std::string_view rawValue(ItemKind kind) {
    return kItemKindNames[static_cast<size_t>(kind)];
}

std::optional<ItemKind> itemKindFromRaw(std::string_view raw) {
    for (size_t i = 0; i < kItemKindNames.size(); ++i)
        if (kItemKindNames[i] == raw) return static_cast<ItemKind>(i);
    return std::nullopt;
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
