#include <filesystem>

#include "media/documents.h"
#include "media/images.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

void readDocument(ScanContext& ctx, Record& pdf, std::string_view bytes) {
    auto info = documentInfo(bytes);
    if (!info) return ctx.skip(pdf.path, "PDF could not be opened (it may be password protected).");

    std::filesystem::path path(pdf.path);
    std::string name = path.filename().string();
    Evidence item;
    item.kind = ItemKind::document;
    item.fileID = pdf.file.sha256;
    item.position = 1;  // one item per file
    // The first page's own date, else the date the file says it was made;
    // only the file's name or its modification time count as estimates.
    auto date = firstDate(info->firstPageText, ctx.order);
    if (!date) date = info->created;
    item.dateIsEstimated = !date;
    item.date = date ? *date : fallbackDate(pdf.path);
    // The layout groups documents by their category, kept where other items
    // keep their sender.
    item.sender = category(info->firstPageText, name);
    item.text = path.stem().string();
    item.detailsForWriting().imageURL = pdf.path;

    MediaGroup& group = ctx.group(SourceKind::documents);
    group.items.push_back(std::move(item));
    group.files.push_back(pdf.file);
}

}  // namespace kinfolio::Scanner
