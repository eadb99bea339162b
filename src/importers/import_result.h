#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/evidence.h"
#include "model/settings.h"

namespace kinfolio::Importer {

// What a chat parser returns: its items in file order and remarks for the
// source's notes.
struct ImportResult {
    std::vector<Evidence> items;
    std::vector<std::string> notes;
    // What the dates at the starts of the chat's lines tell of the order of
    // day and month, from a reader that looked at every line as it read (as
    // Importer::detectOrder looks): the outer none when it did not, the inner
    // when they tell neither order or both.
    std::optional<std::optional<DateOrder>> orderSeen;
};

}  // namespace kinfolio::Importer
