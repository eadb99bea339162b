#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"

// The text file of LINE's "Export chat history", from the phone app or the PC
// app, in English, Japanese, Chinese, Korean or Thai. How space-separated
// lines are split into sender and text is explained in line.cpp.
namespace kinfolio::Importer {

// The day of a day-header line ("Sat, 2025/06/14", "2025/06/14(Sat)",
// "2023/03/04（土）", "2023.3.4 토요일"), or none.
std::optional<Instant> lineDay(std::string_view line);
// A LINE export: its header line starts with "[LINE]", or its first line is
// a day line.
bool looksLikeLine(std::string_view text);

struct LineChat {
    std::string title;  // the chat's name from the "[LINE]" title line; may be empty
    std::vector<Evidence> items;
};

// Messages, calls and system lines (items without a sender) of a LINE
// export, positioned by their 1-based line numbers. Throws EvidenceError.
LineChat line(std::string_view text, const std::string& fileID);

}  // namespace kinfolio::Importer
