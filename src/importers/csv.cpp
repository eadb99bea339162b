#include "importers/csv.h"

#include <algorithm>
#include <span>

#include "importers/dates.h"
#include "model/evidence.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

bool isSpecial(char c) {
    return c == ',' || c == '"' || c == '\n' || c == '\r';
}

// Reads rows until the end of the text or, with `firstOnly`, until the first
// row that is not blank. A CR LF pair is one line break. Fields are built from
// whole runs of plain characters, so a file of a million rows reads in one
// linear pass.
std::vector<CsvRow> readRows(std::string_view text, bool firstOnly) {
    std::vector<CsvRow> rows;
    CsvRow row;
    std::string field;
    bool quotedField = false, afterClosingQuote = false;
    auto endField = [&] {
        row.push_back(std::move(field));
        field.clear();
        quotedField = afterClosingQuote = false;
    };
    auto endRow = [&] {
        endField();
        bool blank = std::all_of(row.begin(), row.end(), [](const auto& f) { return f.empty(); });
        if (!blank) rows.push_back(std::move(row));
        row.clear();
    };
    size_t i = 0, n = text.size();
    while (i < n) {
        char c = text[i];
        if (c == ',') {
            endField();
            ++i;
        } else if (c == '\n' || c == '\r') {
            i += (c == '\r' && i + 1 < n && text[i + 1] == '\n') ? 2 : 1;
            endRow();
            if (firstOnly && !rows.empty()) return rows;
        } else if (afterClosingQuote) {
            throw EvidenceError::invalid("Unexpected text after closing CSV quote.");
        } else if (c == '"') {
            if (!field.empty() || quotedField)
                throw EvidenceError::invalid("Malformed CSV quotes.");
            quotedField = true;
            // Inside quotes: commas and line breaks are text, "" is one quote.
            size_t from = i + 1;
            while (true) {
                size_t q = text.find('"', from);
                if (q == std::string_view::npos)
                    throw EvidenceError::invalid("CSV has an unclosed quoted field.");
                field.append(text.substr(from, q - from));
                if (q + 1 < n && text[q + 1] == '"') {
                    field += '"';
                    from = q + 2;
                    continue;
                }
                i = q + 1;
                afterClosingQuote = true;
                break;
            }
        } else {
            size_t end = i;
            while (end < n && !isSpecial(text[end]))
                ++end;
            field.append(text.substr(i, end - i));
            i = end;
        }
    }
    if (!field.empty() || !row.empty() || quotedField) endRow();
    return rows;
}

CsvRow normalised(const CsvRow& row) {
    CsvRow out;
    out.reserve(row.size());
    for (const auto& cell : row)
        out.push_back(caseFolded(trimSpacesAndTabs(cell)));
    return out;
}

std::optional<size_t> column(const CsvRow& header, std::string_view name) {
    auto it = std::find(header.begin(), header.end(), name);
    if (it == header.end()) return std::nullopt;
    return static_cast<size_t>(it - header.begin());
}

enum class Role { date, sender, text };

// The names chat exporters and spreadsheet programs give the three columns,
// case-folded, in English, Korean, Japanese, German, French and Spanish.
// Where a header has two names of one column, the one earlier here wins, so
// the names that may stand for only the time of day ("time", "hora") come
// last among the dates.
constexpr std::string_view kDateNames[] = {
    "date",       "datetime", "date/time", "timestamp", "fecha", "marca de tiempo",
    "날짜",       "일시",     "日時",      "日付",      "datum", "zeitstempel",
    "horodatage", "time",     "시간",      "zeit",      "hora"};
constexpr std::string_view kSenderNames[] = {
    "sender",     "sender name", "from",      "user",     "author", "name",     "보낸 사람",
    "사용자",     "이름",        "送信者",    "ユーザー", "名前",   "absender", "von",
    "expéditeur", "auteur",      "remitente", "autor",    "de"};
constexpr std::string_view kTextNames[] = {
    "text", "message",   "body",   "content", "메시지",  "내용",    "メッセージ", "本文",
    "内容", "nachricht", "inhalt", "texte",   "contenu", "mensaje", "texto",      "contenido"};
constexpr std::span<const std::string_view> kColumnNames[] = {kDateNames, kSenderNames,
                                                              kTextNames};  // by Role

// The names of a column that holds only the time of day, beside a date
// column that holds only the day.
constexpr std::string_view kTimeNames[] = {"time", "시간", "時刻", "時間", "zeit", "heure", "hora"};

bool isQuillory(const CsvRow& header) {
    return column(header, "date_local") && column(header, "direction");
}

// The column of a role: Quillory's "date_local" for its dates, otherwise the
// first of the role's names that the header holds.
std::optional<size_t> column(const CsvRow& header, Role role) {
    if (role == Role::date && isQuillory(header)) return column(header, "date_local");
    for (std::string_view name : kColumnNames[static_cast<size_t>(role)])
        if (auto found = column(header, name)) return found;
    return std::nullopt;
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
    return normalised(rows.front());
}

bool hasChatColumns(const CsvRow& header) {
    return column(header, Role::date) && column(header, Role::sender) && column(header, Role::text);
}

namespace {

// Rows without the byte-order marks some spreadsheet programs write.
std::vector<CsvRow> rowsOf(std::string_view text) {
    return text.find("\uFEFF") == std::string_view::npos ? csvRows(text)
                                                         : csvRows(removeAll(text, "\uFEFF"));
}

}  // namespace

bool datesReadEitherWay(std::string_view text) {
    std::vector<CsvRow> rows;
    try {
        rows = rowsOf(text);
    } catch (const EvidenceError&) {
        return false;
    }
    if (rows.size() < 2) return false;
    CsvRow header = normalised(rows.front());
    bool quillory = isQuillory(header);
    auto dateCol = column(header, Role::date);
    if (!dateCol) return false;
    for (size_t r = 1; r < rows.size(); ++r) {
        if (rows[r].size() <= *dateCol) return false;
        std::string cell = quillory ? prefixCodePoints(rows[r][*dateCol], 19) : rows[r][*dateCol];
        auto dayFirst = Importer::date(cell, DateOrder::dayFirst);
        if (!dayFirst || dayFirst != Importer::date(cell, DateOrder::monthFirst)) return false;
    }
    return true;
}

ImportResult csv(std::string_view text, const std::string& fileID, DateOrder order) {
    std::vector<CsvRow> rows = rowsOf(text);
    if (rows.empty()) throw EvidenceError::invalid("CSV is empty.");
    const SharedText sharedID(fileID);
    CsvRow header = normalised(rows.front());
    bool quillory = isQuillory(header);
    auto dateCol = column(header, Role::date);
    auto senderCol = column(header, Role::sender), textCol = column(header, Role::text);
    auto attachmentsCol = column(header, "attachments"), directionCol = column(header, "direction");
    if (!dateCol || !senderCol || !textCol)
        throw EvidenceError::invalid("CSV needs date, sender and text columns.");
    // A time of day kept in a column of its own is read with the day.
    std::optional<size_t> timeCol;
    for (std::string_view name : kTimeNames)
        if (auto found = column(header, name); found && found != dateCol && !quillory && !timeCol)
            timeCol = found;

    ImportResult result;
    result.items.reserve(rows.size() - 1);
    for (size_t r = 1; r < rows.size(); ++r) {
        CsvRow& row = rows[r];
        size_t n = r + 1;  // the header is row 1
        if (row.size() != header.size())
            throw EvidenceError::invalid("Row " + std::to_string(n) +
                                         " has the wrong number of columns.");
        // A Quillory date carries a zone or fraction after "yyyy-MM-dd HH:mm:ss";
        // the written wall-clock time is what counts.
        const std::string& cell = row[*dateCol];
        std::optional<Instant> date;
        if (timeCol && !row[*timeCol].empty())
            date = Importer::date(cell + " " + trimSpacesAndTabs(row[*timeCol]), order);
        if (!date) date = Importer::date(quillory ? prefixCodePoints(cell, 19) : cell, order);
        if (!date)
            throw EvidenceError::invalid("Could not read the date on row " + std::to_string(n) +
                                         ".");
        if (quillory && asciiLower(trimSpacesAndTabs(row[*directionCol])) == "event") continue;

        Evidence e;
        e.date = *date;
        e.sender = std::move(row[*senderCol]);
        e.text = std::move(row[*textCol]);
        e.fileID = sharedID;
        e.position = static_cast<int64_t>(n);
        // One picture per message: further names are dropped on purpose.
        if (attachmentsCol && !row[*attachmentsCol].empty()) {
            const std::string& names = row[*attachmentsCol];
            std::string first = trimSpacesAndTabs(names.substr(0, names.find("; ")));
            if (!first.empty()) e.detailsForWriting().attachmentName = std::move(first);
        }
        result.items.push_back(std::move(e));
    }
    if (result.items.empty()) throw EvidenceError::invalid("CSV has no messages.");
    return result;
}

}  // namespace kinfolio::Importer
