#include <filesystem>

#include "importers/csv.h"
#include "scan/date_order.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

Source spreadsheetChat(const ScanContext& ctx, const Record& csv, std::string_view text,
                       SourceKind kind, std::string name) {
    ChatDateOrder dates = chatDateOrder(text, ctx.order);
    // The note is for dates that could be misread; ISO dates cannot.
    if (dates.note && Importer::datesReadEitherWay(text)) dates.note.reset();
    auto read = Importer::csv(text, csv.file.sha256, dates.order);
    std::vector<std::string> notes;
    if (dates.note) notes.push_back(*dates.note);
    notes.insert(notes.end(), read.notes.begin(), read.notes.end());
    return chatSource(kind, csv.file, {}, std::move(read.items), std::move(name), std::move(notes));
}

void readChatCsv(ScanContext& ctx, Record& csv, std::string_view text) {
    try {
        std::string name = std::filesystem::path(csv.path).stem().string();
        ctx.sources.push_back(spreadsheetChat(ctx, csv, text, SourceKind::chatCSV, name));
    } catch (const EvidenceError& e) {
        // The message names the row and the problem; the file is already
        // known to be a chat spreadsheet by its columns.
        ctx.skip(csv.path, e.what());
    }
}

}  // namespace kinfolio::Scanner
