#pragma once

#include <string>
#include <utility>
#include <vector>

#include "model/calendar.h"
#include "model/source.h"
#include "selection/selection.h"
#include "support/chat_items.h"

// Small builders for the synthetic scans of the selection tests.
namespace kinfolio::testing {

inline Instant at(int year, int month, int day, int hour = 12, int minute = 0, int second = 0) {
    return *Calendar::makeDate(year, month, day, hour, minute, second);
}

inline Evidence item(ItemKind kind, std::string fileID, int64_t position, Instant date,
                     std::string sender = "") {
    Evidence e = message(fileID, position, date, sender, "item " + std::to_string(position));
    e.kind = kind;
    return e;
}

inline Evidence message(std::string fileID, int64_t position, Instant date,
                        std::string sender = "Sam") {
    return item(ItemKind::message, std::move(fileID), position, date, std::move(sender));
}

inline Source source(SourceKind kind, std::string id, std::vector<Evidence> items) {
    Source s;
    s.kind = kind;
    s.id = id;
    s.name = std::move(id);
    s.items = std::move(items);
    sortByDate(s.items);
    return s;
}

// `count` messages of one file, one a day from the given day at noon, with
// positions first, first + 1, …
inline std::vector<Evidence> dailyMessages(const std::string& fileID, int count, int year,
                                           int month, int day = 1, int64_t first = 0) {
    std::vector<Evidence> items;
    for (int i = 0; i < count; ++i)
        items.push_back(message(fileID, first + i, at(year, month, day) + i * 86400.0));
    return items;
}

// The items by address, as the selection takes and gives them.
inline Selection::ItemRefs refs(const std::vector<Evidence>& items) {
    Selection::ItemRefs result;
    for (const auto& e : items)
        result.push_back(&e);
    return result;
}

inline std::vector<std::string> ids(const Selection::ItemRefs& items) {
    std::vector<std::string> result;
    for (const Evidence* e : items)
        result.push_back(e->id());
    return result;
}

}  // namespace kinfolio::testing
