#include "scan/routes.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "importers/csv.h"
#include "importers/email.h"
#include "importers/line.h"
#include "importers/meta.h"
#include "importers/telegram.h"
#include "importers/whatsapp.h"
#include "model/text.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kUnknownEncoding = "Text file in an unknown encoding.";

bool isLineExport(std::string_view text) {
    if (startsWith(text, "[LINE]")) return true;
    size_t end = text.find_first_of("\r\n");
    return Importer::lineDay(text.substr(0, end)).has_value();
}

// The three content tests of a text file, most specific first: an e-mail
// header block is unmistakable, WhatsApp lines come next, LINE last.
void routeText(ScanContext& ctx, Record& r) {
    std::string decoded;
    auto text = textOf(r.data.bytes(), decoded);
    if (!text) return ctx.skip(r.path, std::string(kUnknownEncoding));
    if (Importer::looksLikeEmail(*text)) return readEmailText(ctx, r, *text);
    if (Importer::looksLikeWhatsApp(*text)) {
        fs::path p(r.path);
        std::string name =
            p.filename() == "_chat.txt" ? p.parent_path().filename().string() : p.stem().string();
        return readWhatsAppText(ctx, r, *text, name);
    }
    if (isLineExport(*text)) return readLineText(ctx, r, *text);
    ctx.skip(r.path, "Text file that is not a chat export.");
}

void routeCsv(ScanContext& ctx, Record& r) {
    std::string decoded;
    auto text = textOf(r.data.bytes(), decoded);
    if (!text) return ctx.skip(r.path, std::string(kUnknownEncoding));
    auto header = Importer::csvHeader(*text);
    if (!header || !Importer::hasChatColumns(*header))
        return ctx.skip(r.path, "Spreadsheet without date, sender and text columns.");
    readChatCsv(ctx, r, *text);
}

void routeJson(ScanContext& ctx, Record& r) {
    if (Importer::isTelegram(r.data.bytes())) return readTelegram(ctx, r);
    if (Importer::isMeta(r.data.bytes())) return readMeta(ctx, r);
    ctx.skip(r.path, "Data file that is not a Telegram, Messenger or Instagram export.");
}

// HTML exports are never imported; the reason tells the user what to do instead.
void routeHtml(ScanContext& ctx, Record& r) {
    std::string text = repairUtf8(r.data.bytes().substr(0, 16000));
    if (prefixCodePoints(text, 4000).find("Telegram") != std::string::npos)
        return ctx.skip(r.path,
                        "Telegram HTML export. Export the chat again and choose "
                        "\u201cMachine-readable JSON\u201d.");
    if (startsWith(fs::path(r.path).filename().string(), "message_"))
        return ctx.skip(r.path,
                        "Messenger/Instagram HTML download. Request it again and choose the "
                        "JSON format.");
    ctx.skip(r.path, "Web page; Kinfolio does not read HTML.");
}

void routeEmail(ScanContext& ctx, Record& r) {
    std::string decoded;
    auto text = textOf(r.data.bytes(), decoded);
    if (!text) return ctx.skip(r.path, std::string(kUnknownEncoding));
    readEmailText(ctx, r, *text);
}

struct Route {
    std::string_view extension;
    void (*read)(ScanContext&, Record&);
};

// The routing table: one line per extension.
constexpr std::array<Route, 22> kRoutes = {{
    {"zip", readZip},    {"txt", routeText},  {"csv", routeCsv},    {"json", routeJson},
    {"html", routeHtml}, {"eml", routeEmail}, {"mbox", routeEmail}, {"pdf", readDocument},
    {"jpg", readImage},  {"jpeg", readImage}, {"heic", readImage},  {"heif", readImage},
    {"png", readImage},  {"gif", readImage},  {"tif", readImage},   {"tiff", readImage},
    {"webp", readImage}, {"mov", readVideo},  {"mp4", readVideo},   {"m4v", readVideo},
    {"3gp", readVideo},  {"avi", readVideo},
}};

const Route* findRoute(const std::string& path) {
    std::string ext = fs::path(path).extension().string();
    ext = asciiLower(ext.empty() ? ext : ext.substr(1));
    auto it = std::find_if(kRoutes.begin(), kRoutes.end(),
                           [&](const Route& r) { return r.extension == ext; });
    return it == kRoutes.end() ? nullptr : &*it;
}

}  // namespace

bool isMedia(const std::string& path) {
    const Route* r = findRoute(path);
    return r && (r->read == readImage || r->read == readVideo || r->read == readDocument);
}

void route(ScanContext& ctx, const std::string& path) {
    const Route* r = findRoute(path);
    if (!r) return ctx.skip(path, "Not a file type Kinfolio reads.");
    auto record = ctx.record(path);
    if (!record) return;
    r->read(ctx, *record);
}

void readQuilloryFolders(ScanContext& ctx) {
    for (const auto& path : ctx.files) {
        fs::path p(path);
        if (p.filename() != "messages.csv" || ctx.consumed.count(path)) continue;
        std::string folder = p.parent_path().string();
        auto verification = MappedFile::open(folder + "/verification.txt");
        if (!verification || !isValidUtf8(verification->bytes())) continue;
        if (!startsWith(verification->bytes(), "Quillory verification report")) continue;
        readQuilloryFolder(ctx, folder, path);
    }
}

}  // namespace kinfolio::Scanner
