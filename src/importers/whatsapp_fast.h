#pragma once

#include <optional>
#include <string_view>

#include "model/evidence.h"
#include "model/settings.h"

// Hand-written readers of WhatsApp lines and timestamps. A chat holds up to
// millions of lines; the ICU expression and date parsing cost microseconds
// each, these nanoseconds. Each one answers only where it is sure and says so
// otherwise, and then the caller asks the ICU reference (whatsappLine() and
// Importer::date), so the results are always the reference's.
namespace kinfolio::Importer::fast {

enum class Verdict { yes, no, unsure };

// A line of a WhatsApp export split as whatsappLine() splits it.
struct LineMatch {
    Verdict verdict = Verdict::unsure;
    std::string_view timestamp;  // group 1 or 2
    std::string_view rest;       // group 3
};
LineMatch matchLine(std::string_view line);

// Whether the line begins like a timestamp: ^\[?\d{1,4}[/.-]\d{1,2}[/.-]\d{1,4}
Verdict dateLikeStart(std::string_view line);

// The instant of a normalised WhatsApp timestamp (commas removed, dotted
// markers rewritten), for the common day/month/year forms; none when unsure.
std::optional<Instant> timestamp(std::string_view text, DateOrder order);

// Importer::detectOrder over a whole chat: the outer none means unsure.
std::optional<std::optional<DateOrder>> detectOrder(std::string_view text);

}  // namespace kinfolio::Importer::fast
