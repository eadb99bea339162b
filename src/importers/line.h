#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"

// The text file of LINE's "Export chat history".
namespace kinfolio::Importer {

// The day of a day-header line ("Sat, 2025/06/14", "2025/06/14(Sat)"), or none.
std::optional<Instant> lineDay(std::string_view line);
// A LINE export: its header line starts with "[LINE]", or its first line is
// a day line.
bool looksLikeLine(std::string_view text);

struct LineChat {
    std::string title;  // the chat's name from the "[LINE]" title line; may be empty
    std::vector<Evidence> items;
};

// Messages and calls of a LINE export, positioned by their 1-based line
// numbers. Throws EvidenceError.
LineChat line(std::string_view text, const std::string& fileID);

}  // namespace kinfolio::Importer
