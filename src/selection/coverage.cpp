// The small texts and counts that tell the user, and the reader of the
// document, what the selection covers.
#include <algorithm>
#include <array>
#include <set>

#include "model/calendar.h"
#include "model/text.h"
#include "selection/selection.h"

namespace kinfolio::Selection {

namespace {

// Coarser than the item kinds on purpose: a reader counts calls as
// conversation and screenshots as pictures.
enum Bucket { messages, photos, videos, documents, none };

Bucket bucketOf(const Evidence& item) {
    switch (item.kind) {
        case ItemKind::message:
            return item.isSystem() ? none : messages;
        case ItemKind::call:
            return messages;
        case ItemKind::photo:
        case ItemKind::screenshot:
            return photos;
        case ItemKind::video:
            return videos;
        case ItemKind::document:
        case ItemKind::email:
            return documents;
    }
    return none;
}

std::string monthName(int month) {
    int year = month >= 0 ? month / 12 : -((-month + 11) / 12);
    Instant first = *Calendar::makeDate(year, month - year * 12 + 1, 1);
    return Calendar::format(first, "MMM yyyy");
}

}  // namespace

int exportCount(const ItemRefs& selected) {
    return static_cast<int>(std::count_if(selected.begin(), selected.end(),
                                          [](const Evidence* e) { return !e->isSystem(); }));
}

std::string summary(const ItemRefs& selected) {
    static constexpr std::array<const char*, 4> kWords = {"message", "photo", "video", "document"};
    std::array<int, 4> counts{};
    for (const Evidence* item : selected)
        if (Bucket b = bucketOf(*item); b != none) ++counts[b];
    std::vector<std::string> parts;
    for (size_t b = 0; b < counts.size(); ++b)
        if (counts[b] > 0)
            parts.push_back(std::to_string(counts[b]) + " " + kWords[b] +
                            (counts[b] == 1 ? "" : "s"));
    return parts.empty() ? "Nothing" : join(parts, ", ");
}

std::vector<std::string> gapMonths(const ItemRefs& selected) {
    std::set<int> months;
    for (const Evidence* item : selected)
        if (!item->isSystem()) months.insert(monthIndex(item->date));
    std::vector<std::string> gaps;
    if (months.empty()) return gaps;
    for (int month = *months.begin(); month < *months.rbegin(); ++month)
        if (!months.contains(month)) gaps.push_back(monthName(month));
    return gaps;
}

std::string gapSentence(const std::vector<std::string>& gapMonths) {
    if (gapMonths.empty()) return "";
    return "Nothing selected for " + join(gapMonths, ", ") +
           ". Add material for those months if you have it.";
}

std::string samplingNote(const Settings& settings) {
    std::string note = "This is a selection, not a complete history. ";
    if (settings.messagesPerMonth != 0)
        note += "Messages: up to " + std::to_string(settings.messagesPerMonth) +
                " evenly spaced messages per calendar month from each conversation, each with "
                "the message before and after it for context. All calls are included.";
    else
        note += "All messages and calls in the chosen period are included.";
    note += " ";
    if (settings.photosPerMonth != 0)
        note += "Photos, screenshots and videos: up to " + std::to_string(settings.photosPerMonth) +
                " evenly spaced per calendar month.";
    else
        note += "All photos, screenshots and videos in the chosen period are included.";
    note += " ";
    if (!settings.excludedItems.empty() || !settings.addedItems.empty())
        note += "The applicant then added " + std::to_string(settings.addedItems.size()) +
                " and removed " + std::to_string(settings.excludedItems.size()) +
                " item(s) by hand.";
    else
        note += "No items were added or removed by hand.";
    return note;
}

}  // namespace kinfolio::Selection
