#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Chats kept as comma-separated spreadsheets.
namespace kinfolio::Importer {

using CsvRow = std::vector<std::string>;

// RFC 4180 rows; blank rows dropped. Throws EvidenceError.
std::vector<CsvRow> csvRows(std::string_view text);
// The first row trimmed of spaces and tabs and lower-cased; none when the
// text has no readable first row.
std::optional<CsvRow> csvHeader(std::string_view text);
// Whether a normalised header has a date, a sender and a text column.
bool hasChatColumns(const CsvRow& header);

}  // namespace kinfolio::Importer
