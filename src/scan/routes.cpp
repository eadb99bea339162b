#include "scan/routes.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "importers/csv.h"
#include "importers/email.h"
#include "importers/kakaotalk.h"
#include "importers/line.h"
#include "importers/meta.h"
#include "importers/telegram.h"
#include "importers/whatsapp.h"
#include "model/text.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

bool chatSpreadsheet(std::string_view text) {
    auto header = Importer::csvHeader(text);
    return header && Importer::hasChatColumns(*header);
}

// A spreadsheet in neither UTF-8 nor UTF-16 is read as Windows-1252. UTF-16
// without a byte-order mark is told apart by its NUL bytes: the commas and
// line breaks of a spreadsheet are ASCII, which UTF-16 writes with a zero
// byte, and no text in Windows-1252 holds one.
std::optional<std::string_view> spreadsheetText(std::string_view bytes, std::string& decoded) {
    bool utf16 = bytes.find('\0') != std::string_view::npos || startsWith(bytes, "\xFF\xFE") ||
                 startsWith(bytes, "\xFE\xFF");
    if (utf16 || isValidUtf8(bytes)) return textOf(bytes, decoded);
    decoded = decodeWindows1252(bytes);
    return std::string_view(decoded);
}

std::string extensionOf(const std::string& path) {
    std::string ext = fs::path(path).extension().string();
    return asciiLower(ext.empty() ? ext : ext.substr(1));
}

const Route* accepting(const std::vector<const Route*>& rows, std::string_view content) {
    for (const Route* r : rows)
        if (!r->accepts || r->accepts(content)) return r;
    return nullptr;
}

// Reads the file; when another program changed it meanwhile, whatever was
// read from it is taken back and the file is skipped instead.
void readUnlessChanged(ScanContext& ctx, const Route& r, Record& record, std::string_view content) {
    size_t sources = ctx.sources.size(), skipped = ctx.skipped.size();
    std::map<SourceKind, std::pair<size_t, size_t>> grouped;
    for (const auto& [kind, group] : ctx.media)
        grouped[kind] = {group.items.size(), group.files.size()};
    r.read(ctx, record, content);
    if (!record.data.changed()) return;
    ctx.sources.erase(ctx.sources.begin() + static_cast<std::ptrdiff_t>(sources),
                      ctx.sources.end());
    ctx.skipped.erase(ctx.skipped.begin() + static_cast<std::ptrdiff_t>(skipped),
                      ctx.skipped.end());
    for (auto& [kind, group] : ctx.media) {
        auto [items, files] = grouped.count(kind) ? grouped[kind] : std::pair<size_t, size_t>{};
        group.items.resize(std::min(items, group.items.size()));
        group.files.resize(std::min(files, group.files.size()));
    }
    ctx.skip(record.path, kChangedWhileRead);
}

}  // namespace

const std::vector<Route>& routes() {
    using enum Content;
    static const std::vector<Route> table = {
        {{"zip"}, bytes, nullptr, readZip},
        // A text file is what it starts with: an e-mail starts with its
        // headers or a mailbox's "From " line, a chat with a message line,
        // so a chat that quotes an e-mail further down stays a chat.
        {{"txt"}, text, Importer::looksLikeEmail, readEmailText},
        {.extensions = {"txt"},
         .content = text,
         .accepts = Importer::looksLikeWhatsApp,
         .read = readWhatsAppText,
         .admitsAfterReading = true},
        {{"txt"}, text, Importer::looksLikeLine, readLineText},
        {{"txt"}, text, Importer::looksLikeKakaoTalk, readKakaoTalkText},
        {{"txt"}, text, nullptr, nullptr, "Text file that is not a chat export."},
        {{"csv"}, spreadsheet, Importer::looksLikeKakaoTalkCsv, readKakaoTalkCsv},
        {{"csv"}, spreadsheet, chatSpreadsheet, readChatCsv},
        {{"csv"},
         spreadsheet,
         nullptr,
         nullptr,
         "Spreadsheet without date, sender and text columns."},
        {{"json"}, bytes, Importer::isTelegram, readTelegram},
        {{"json"}, bytes, Importer::isMeta, readMeta},
        {{"json"},
         bytes,
         nullptr,
         nullptr,
         "Data file that is not a Telegram, Messenger or Instagram export."},
        {{"html"}, bytes, nullptr, readWebPage},
        {{"eml", "mbox"}, bytes, nullptr, readEmailFile},
        {{"pdf"}, bytes, nullptr, readDocument, {}, Pass::media},
        {{"jpg", "jpeg", "heic", "heif", "png", "gif", "tif", "tiff", "webp"},
         bytes,
         nullptr,
         readImage,
         {},
         Pass::media,
         true},
        {{"mov", "mp4", "m4v", "3gp", "avi"}, bytes, nullptr, readVideo, {}, Pass::media},
    };
    return table;
}

std::vector<const Route*> routesFor(const std::string& path) {
    std::string ext = extensionOf(path);
    std::vector<const Route*> rows;
    for (const auto& r : routes())
        if (std::find(r.extensions.begin(), r.extensions.end(), ext) != r.extensions.end())
            rows.push_back(&r);
    return rows;
}

bool isMedia(const std::string& path) {
    auto rows = routesFor(path);
    return !rows.empty() && rows.front()->pass == Pass::media;
}

bool isPicture(const std::string& path) {
    auto rows = routesFor(path);
    return !rows.empty() && rows.front()->picture;
}

void route(ScanContext& ctx, const std::string& path) {
    auto rows = routesFor(path);
    if (rows.empty()) return ctx.skip(path, "Not a file type Kinfolio reads.");
    bool readBeforeAdmitted =
        std::any_of(rows.begin(), rows.end(), [](const Route* r) { return r->admitsAfterReading; });
    auto record = ctx.open(path, readBeforeAdmitted);
    if (!record) return;
    std::string decoded;
    std::optional<std::string_view> content = record->data.bytes();
    if (rows.front()->content != Content::bytes)
        content = rows.front()->content == Content::spreadsheet ? spreadsheetText(*content, decoded)
                                                                : textOf(*content, decoded);
    const Route* r = content ? accepting(rows, *content) : nullptr;
    // A copy of an earlier file is skipped as one whatever it holds. A
    // reader that admits the file itself does so once it has read it,
    // unless an earlier file has its size: reading a copy of a large chat
    // in full would hold its million items twice.
    bool readFirst =
        r && r->read && r->admitsAfterReading && !ctx.admittedSizes.count(record->file.bytes);
    if (!readFirst && !ctx.admit(*record)) return;
    if (!content) return ctx.skip(record->path, "Text file in an unknown encoding.");
    if (!r) return ctx.skip(record->path, "Not a file type Kinfolio reads.");
    if (!r->read) return ctx.skip(record->path, std::string(r->refusal));
    try {
        readUnlessChanged(ctx, *r, *record, *content);
    } catch (...) {
        // A reader that failed before it admitted the file: a copy is still
        // known as one, and the file is still known to later copies.
        if (!ctx.admit(*record)) return;
        throw;
    }
}

const std::vector<FolderRoute>& folderRoutes() {
    static const std::vector<FolderRoute> table = {
        {isQuilloryExport, readQuilloryFolder},
    };
    return table;
}

void readExportFolders(ScanContext& ctx) {
    for (const auto& folderRoute : folderRoutes())
        for (const auto& path : ctx.files) {
            if (ctx.consumed.count(path)) continue;
            std::string folder = fs::path(path).parent_path().string();
            if (folderRoute.accepts(ctx, path)) folderRoute.read(ctx, folder, path);
        }
}

}  // namespace kinfolio::Scanner
