#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importers/import_result.h"
#include "model/settings.h"

// Chats kept as comma-separated spreadsheets.
namespace kinfolio::Importer {

using CsvRow = std::vector<std::string>;

// RFC 4180 rows; blank rows dropped. Throws EvidenceError.
std::vector<CsvRow> csvRows(std::string_view text);
// The first row trimmed of spaces and tabs and case-folded; none when the
// text has no readable first row.
std::optional<CsvRow> csvHeader(std::string_view text);
// Whether a normalised header has a date, a sender and a text column, under
// any of the names chat exporters give them, in English, Korean, Japanese,
// German, French or Spanish ("Timestamp", "Sender Name", "Body", "날짜").
bool hasChatColumns(const CsvRow& header);

// Whether every date cell of a chat spreadsheet reads as the same time in
// either date order ("2025-01-06 09:00", "6 Jan 2025"), so the order needs
// no note; false when the text is no readable chat spreadsheet.
bool datesReadEitherWay(std::string_view text);

// The messages of a chat spreadsheet, generic or Quillory, positioned by row
// number (the header is row 1). Throws EvidenceError.
ImportResult csv(std::string_view text, const std::string& fileID, DateOrder order);

}  // namespace kinfolio::Importer
