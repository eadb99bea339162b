#include "selection/selection.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "model/calendar.h"
#include "selection/sampling.h"

namespace kinfolio::Selection {

namespace {

constexpr double kDay = 86400.0;

// Ids as positions per file, so that looking an item up never builds its id
// text: a scan of a million items would otherwise make a million strings.
// Consecutive items nearly always share their file, so the last file's
// positions are kept at hand and a lookup is one comparison and one integer
// hash.
class IdIndex {
public:
    void insert(std::string_view fileID, int64_t position) {
        byFile_[fileID].insert(position);
        hasLast_ = false;
    }

    bool contains(const Evidence& item) {
        if (byFile_.empty()) return false;
        if (!hasLast_ || item.fileID != lastFileID_) {
            auto found = byFile_.find(item.fileID.str());
            lastPositions_ = found == byFile_.end() ? nullptr : &found->second;
            lastFileID_ = item.fileID.str();
            hasLast_ = true;
        }
        return lastPositions_ && lastPositions_->contains(item.position);
    }

private:
    std::unordered_map<std::string_view, std::unordered_set<int64_t>> byFile_;
    bool hasLast_ = false;
    std::string_view lastFileID_;
    const std::unordered_set<int64_t>* lastPositions_ = nullptr;
};

// The ids of the settings. An id whose number is not written the way an
// item's id writes it names no item and is left out.
IdIndex indexOf(const IdSet& ids) {
    IdIndex index;
    for (const auto& id : ids) {
        size_t colon = id.rfind(':');
        if (colon == std::string::npos) continue;
        std::string_view number = std::string_view(id).substr(colon + 1);
        int64_t position = 0;
        auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), position);
        if (error != std::errc() || end != number.data() + number.size() ||
            std::to_string(position) != number)
            continue;
        index.insert(std::string_view(id).substr(0, colon), position);
    }
    return index;
}

bool isIncluded(const Source& source, const Settings& settings) {
    return !settings.excludedSources.contains(source.id);
}

ItemRefs itemsInRange(const Source& source, const Settings& settings) {
    ItemRefs items;
    items.reserve(source.items.size());
    for (const auto& item : source.items)
        if (inRange(item, settings)) items.push_back(&item);
    return items;
}

void addAll(const ItemRefs& items, ItemRefs& out) {
    out.insert(out.end(), items.begin(), items.end());
}

void addMarked(const ItemRefs& items, const Flags& marks, ItemRefs& out) {
    for (size_t i = 0; i < items.size(); ++i)
        if (marks[i]) out.push_back(items[i]);
}

}  // namespace

// Each source is sampled by itself.
ItemRefs proposed(const ScanResult& scan, const Settings& settings) {
    ItemRefs picked;
    for (const auto& source : scan.sources) {
        if (!isIncluded(source, settings)) continue;
        ItemRefs items = itemsInRange(source, settings);
        switch (source.kind) {
            case SourceKind::photos:
            case SourceKind::screenshots:
            case SourceKind::videos:
                if (settings.photosPerMonth == 0)
                    addAll(items, picked);
                else
                    addMarked(items, sampleFlags(items, settings.photosPerMonth), picked);
                break;
            case SourceKind::documents:
            case SourceKind::emails:
                addAll(items, picked);
                break;
            default: {
                // A chat: every call, and a sample of the messages with a
                // sender; system lines are neither sampled nor context.
                ItemRefs messages;
                for (const Evidence* item : items) {
                    if (item->kind == ItemKind::call)
                        picked.push_back(item);
                    else if (item->kind == ItemKind::message && !item->isSystem())
                        messages.push_back(item);
                }
                if (settings.messagesPerMonth == 0)
                    addAll(messages, picked);
                else
                    addMarked(
                        messages,
                        contextFlags(messages, sampleFlags(messages, settings.messagesPerMonth)),
                        picked);
            }
        }
    }
    return picked;
}

bool inRange(const Evidence& item, const Settings& settings) {
    if (!settings.limitDates) return true;
    Instant start = Calendar::startOfDay(settings.rangeStart);
    Instant end = Calendar::startOfDay(settings.rangeEnd) + kDay;
    return start <= item.date && item.date < end;
}

ItemRefs candidates(const ScanResult& scan, const Settings& settings) {
    ItemRefs result;
    for (const auto& source : scan.sources)
        if (isIncluded(source, settings))
            for (const auto& item : source.items)
                if (inRange(item, settings)) result.push_back(&item);
    return result;
}

ItemRefs selected(const ScanResult& scan, const Settings& settings) {
    IdIndex proposal;
    for (const Evidence* item : proposed(scan, settings))
        proposal.insert(item->fileID.str(), item->position);
    IdIndex added = indexOf(settings.addedItems);
    IdIndex excluded = indexOf(settings.excludedItems);
    ItemRefs kept;
    for (const auto& source : scan.sources) {
        if (!isIncluded(source, settings)) continue;
        for (const auto& item : source.items)
            if ((proposal.contains(item) || added.contains(item)) && !excluded.contains(item) &&
                inRange(item, settings))
                kept.push_back(&item);
    }
    std::stable_sort(kept.begin(), kept.end(), [](const Evidence* a, const Evidence* b) {
        if (a->date != b->date) return a->date < b->date;
        if (a->fileID != b->fileID) return a->fileID < b->fileID;
        return a->position < b->position;
    });
    return kept;
}

int chatCount(const ScanResult& scan, const ItemRefs& items) {
    IdIndex ids;
    for (const Evidence* item : items)
        ids.insert(item->fileID.str(), item->position);
    return static_cast<int>(
        std::count_if(scan.sources.begin(), scan.sources.end(), [&](const Source& source) {
            return isChat(source.kind) &&
                   std::any_of(source.items.begin(), source.items.end(),
                               [&](const Evidence& item) { return ids.contains(item); });
        }));
}

void setSelected(Settings& settings, const IdSet& proposal, const std::string& itemID, bool on) {
    bool isProposed = proposal.contains(itemID);
    if (on) {
        settings.excludedItems.erase(itemID);
        if (!isProposed) settings.addedItems.insert(itemID);
    } else {
        settings.addedItems.erase(itemID);
        if (isProposed) settings.excludedItems.insert(itemID);
    }
}

void backToAutomaticChoice(Settings& settings) {
    settings.excludedItems.clear();
    settings.addedItems.clear();
}

}  // namespace kinfolio::Selection
