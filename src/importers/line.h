#pragma once

#include <optional>
#include <string_view>

#include "model/evidence.h"

// The text file of LINE's "Export chat history".
namespace kinfolio::Importer {

// The day of a day-header line ("Sat, 2025/06/14", "2025/06/14(Sat)"), or none.
std::optional<Instant> lineDay(std::string_view line);

}  // namespace kinfolio::Importer
