#include "selection/selection.h"

#include <charconv>
#include <functional>
#include <string_view>
#include <unordered_set>

#include "importers/dates.h"
#include "selection/sampling.h"

namespace kinfolio::Selection {

namespace {

constexpr double kDay = 86400.0;

// An item's id without building its text: a scan of a million items would
// otherwise make a million strings just to look them up.
struct ItemKey {
    std::string_view fileID;
    int64_t position = 0;
    bool operator==(const ItemKey&) const = default;
};

struct ItemKeyHash {
    size_t operator()(const ItemKey& k) const {
        return std::hash<std::string_view>{}(k.fileID) ^
               (static_cast<size_t>(k.position) * 0x9E3779B97F4A7C15ull);
    }
};

using KeySet = std::unordered_set<ItemKey, ItemKeyHash>;

ItemKey keyOf(const Evidence& item) {
    return {item.fileID, item.position};
}

// Ids in the settings as keys. An id whose number is not written the way an
// item's id writes it names no item and is left out.
KeySet keysOf(const IdSet& ids) {
    KeySet keys;
    for (const auto& id : ids) {
        size_t colon = id.rfind(':');
        if (colon == std::string::npos) continue;
        std::string_view number = std::string_view(id).substr(colon + 1);
        int64_t position = 0;
        auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), position);
        if (error != std::errc() || end != number.data() + number.size() ||
            std::to_string(position) != number)
            continue;
        keys.insert({std::string_view(id).substr(0, colon), position});
    }
    return keys;
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

// The items the automatic rule picks, each source sampled by itself.
ItemRefs proposedItems(const ScanResult& scan, const Settings& settings) {
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

}  // namespace

bool inRange(const Evidence& item, const Settings& settings) {
    if (!settings.limitDates) return true;
    Instant start = Importer::startOfDay(settings.rangeStart);
    Instant end = Importer::startOfDay(settings.rangeEnd) + kDay;
    return start <= item.date && item.date < end;
}

std::vector<Evidence> candidates(const ScanResult& scan, const Settings& settings) {
    std::vector<Evidence> result;
    for (const auto& source : scan.sources)
        if (isIncluded(source, settings))
            for (const auto& item : source.items)
                if (inRange(item, settings)) result.push_back(item);
    return result;
}

IdSet proposed(const ScanResult& scan, const Settings& settings) {
    IdSet ids;
    for (const Evidence* item : proposedItems(scan, settings))
        ids.insert(item->id());
    return ids;
}

std::vector<Evidence> selected(const ScanResult& scan, const Settings& settings) {
    KeySet proposal;
    for (const Evidence* item : proposedItems(scan, settings))
        proposal.insert(keyOf(*item));
    KeySet added = keysOf(settings.addedItems);
    KeySet excluded = keysOf(settings.excludedItems);
    std::vector<Evidence> kept;
    for (const auto& source : scan.sources) {
        if (!isIncluded(source, settings)) continue;
        for (const auto& item : source.items) {
            ItemKey key = keyOf(item);
            if ((proposal.contains(key) || added.contains(key)) && !excluded.contains(key) &&
                inRange(item, settings))
                kept.push_back(item);
        }
    }
    sortByDateFileAndPosition(kept);
    return kept;
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
