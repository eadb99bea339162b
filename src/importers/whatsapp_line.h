#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/text.h"

namespace kinfolio::Importer {

// One message line of a WhatsApp export. Group 1: the timestamp of an iPhone
// line (in square brackets); group 2: that of an Android line (followed by
// " - " or an en dash); group 3: sender and text.
const Regex& whatsappLine();

// A line split by whatsappLine(): the timestamp and the rest.
struct WhatsAppLine {
    std::string timestamp;
    std::string rest;
};

// The ICU reference for one line; none when it is no message line.
std::optional<WhatsAppLine> splitWhatsAppLine(std::string_view line);
// Whether the line begins like a timestamp (ICU reference).
bool startsLikeDate(std::string_view line);

// The timestamp as Importer::date reads it: commas dropped, "a.m." and
// "p.m." (any case) written as "AM" and "PM".
std::string normaliseTimestamp(std::string_view stamp);
// The same into `out`, whose buffer a loop over a million lines reuses.
void normaliseTimestamp(std::string_view stamp, std::string& out);

}  // namespace kinfolio::Importer
