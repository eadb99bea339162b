#pragma once

#include <string>
#include <vector>

#include "model/calendar.h"
#include "model/evidence.h"

namespace kinfolio::testing {

// A message item of a file.
inline Evidence message(const std::string& fileID, int64_t position, double date,
                        const std::string& sender, const std::string& text) {
    Evidence e;
    e.fileID = fileID;
    e.position = position;
    e.date = date;
    e.sender = sender;
    e.text = text;
    return e;
}

// A chat's item as one line, so a whole chat is checked against a table:
// "<position> <date and time as written> <sender>: <text>", with "note" for
// the sender of a system line, then "[attachment]" when one is named and
// "(call, <length>)" for a call ("(call)" when no length is known).
inline std::string itemLine(const Evidence& e) {
    std::string line = std::to_string(e.position) + " " +
                       Calendar::format(e.date, "yyyy-MM-dd HH:mm:ss") + " " +
                       (e.isSystem() ? "note" : e.sender.str()) + ": " + e.text;
    if (e.dateIsEstimated) line += " (date estimated)";
    if (auto name = e.details().attachmentName) line += " [" + *name + "]";
    auto length = e.details().duration;
    std::string seconds = length ? std::to_string(int64_t(*length)) + " s" : "";
    if (e.kind == ItemKind::call)
        line += " (call" + (length ? ", " + seconds : "") + ")";
    else if (length)
        line += " (" + seconds + ")";
    return line;
}

inline std::vector<std::string> itemLines(const std::vector<Evidence>& items) {
    std::vector<std::string> lines;
    for (const Evidence& e : items)
        lines.push_back(itemLine(e));
    return lines;
}

}  // namespace kinfolio::testing
