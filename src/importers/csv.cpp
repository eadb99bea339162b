#include "importers/csv.h"

#include <algorithm>

#include "model/evidence.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

// Reads rows until the end of the text or, with `firstOnly`, until the first
// row that is not blank. A CR LF pair is one line break.
std::vector<CsvRow> readRows(std::string_view text, bool firstOnly) {
    std::vector<CsvRow> rows;
    CsvRow row;
    std::string field;
    bool inQuotes = false, quotedField = false, afterClosingQuote = false;
    auto endRow = [&] {
        row.push_back(std::move(field));
        field.clear();
        bool blank = std::all_of(row.begin(), row.end(), [](const auto& f) { return f.empty(); });
        if (!blank) rows.push_back(std::move(row));
        row.clear();
        quotedField = afterClosingQuote = false;
    };
    size_t i = 0, n = text.size();
    while (i < n) {
        char c = text[i];
        if (inQuotes) {
            if (c == '"') {
                if (i + 1 < n && text[i + 1] == '"') {
                    field += '"';
                    i += 2;
                    continue;
                }
                inQuotes = false;
                afterClosingQuote = true;
            } else {
                field += c;
            }
            ++i;
            continue;
        }
        if (c == ',') {
            row.push_back(std::move(field));
            field.clear();
            quotedField = afterClosingQuote = false;
        } else if (c == '\n' || c == '\r') {
            if (c == '\r' && i + 1 < n && text[i + 1] == '\n') ++i;
            endRow();
            if (firstOnly && !rows.empty()) return rows;
        } else if (afterClosingQuote) {
            throw EvidenceError::invalid("Unexpected text after closing CSV quote.");
        } else if (c == '"') {
            if (!field.empty() || quotedField)
                throw EvidenceError::invalid("Malformed CSV quotes.");
            inQuotes = quotedField = true;
        } else {
            field += c;
        }
        ++i;
    }
    if (inQuotes) throw EvidenceError::invalid("CSV has an unclosed quoted field.");
    if (!field.empty() || !row.empty() || quotedField) endRow();
    return rows;
}

}  // namespace

std::vector<CsvRow> csvRows(std::string_view text) {
    return readRows(text, false);
}

std::optional<CsvRow> csvHeader(std::string_view text) {
    std::vector<CsvRow> rows;
    try {
        if (startsWith(text, "\uFEFF")) text.remove_prefix(3);
        rows = readRows(text, true);
    } catch (const EvidenceError&) {
        return std::nullopt;
    }
    if (rows.empty()) return std::nullopt;
    CsvRow header;
    for (const auto& cell : rows.front())
        header.push_back(asciiLower(trimSpacesAndTabs(cell)));
    return header;
}

bool hasChatColumns(const CsvRow& header) {
    auto has = [&](std::string_view name) {
        return std::find(header.begin(), header.end(), name) != header.end();
    };
    bool quillory = has("date_local") && has("direction");
    return (quillory || has("date")) && has("sender") && has("text");
}

}  // namespace kinfolio::Importer
