#pragma once

#include <string>
#include <vector>

#include "model/evidence.h"

namespace kinfolio::Importer {

// What a chat parser returns: its items in file order and remarks for the
// source's notes.
struct ImportResult {
    std::vector<Evidence> items;
    std::vector<std::string> notes;
};

}  // namespace kinfolio::Importer
