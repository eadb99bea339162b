#include <algorithm>
#include <filesystem>
#include <memory>

#include "importers/meta.h"
#include "model/text.h"
#include "scan/attach.h"
#include "scan/json_bytes.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

// "message_1.json", "message_2.json", ...: the parts of one conversation.
bool isMessageFile(const fs::path& path) {
    std::string name = path.filename().string();
    if (!startsWith(name, "message_") || !endsWith(name, ".json")) return false;
    std::string_view number = std::string_view(name).substr(8, name.size() - 8 - 5);
    return !number.empty() &&
           std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The later message files of the same folder, in listing order; each is
// claimed and goes through the record step, so an exact copy is still
// reported as one.
std::vector<Record> siblings(ScanContext& ctx, const std::string& main) {
    std::vector<Record> found;
    fs::path mainPath(main);
    if (!isMessageFile(mainPath)) return found;
    auto it = std::find(ctx.files.begin(), ctx.files.end(), main);
    if (it == ctx.files.end()) return found;
    for (++it; it != ctx.files.end(); ++it) {
        fs::path p(*it);
        if (p.parent_path() != mainPath.parent_path() || !isMessageFile(p)) continue;
        if (ctx.consumed.count(*it)) continue;
        // Anything that is not a message file after all is left to the routes.
        auto peek = MappedFile::open(*it);
        if (!peek || !Importer::isMeta(peek->bytes())) continue;
        ctx.consumed.insert(*it);
        if (auto record = ctx.record(*it)) found.push_back(std::move(*record));
    }
    return found;
}

std::unique_ptr<icu::TimeZone> timeZone(const std::string& id) {
    if (id.empty()) return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault());
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(toUnicode(id)));
}

}  // namespace

void readMeta(ScanContext& ctx, Record& json, std::string_view) {
    auto zone = timeZone(ctx.zone);
    std::string zoneID = ctx.zone;
    if (zoneID.empty()) {
        icu::UnicodeString id;
        zoneID = toUtf8(zone->getID(id));
    }

    std::vector<Record> parts = siblings(ctx, json.path);
    parts.insert(parts.begin(), std::move(json));

    std::optional<FileRecord> main;
    std::vector<FileRecord> media;
    std::vector<Evidence> items;
    std::string title;
    for (auto& part : parts) {
        Importer::MetaChat chat;
        try {
            simdjson::dom::document document;
            chat = Importer::meta(parseAndRelease(document, part), part.file.sha256, *zone);
        } catch (const EvidenceError& e) {
            ctx.skip(part.path, e.what());
            continue;
        }
        if (!main) {
            main = part.file;
            title = std::move(chat.title);
        } else {
            media.push_back(part.file);
        }
        items.insert(items.end(), std::make_move_iterator(chat.items.begin()),
                     std::make_move_iterator(chat.items.end()));
    }
    if (!main) return;

    // Photo paths are relative to the root of the download, somewhere above.
    std::string folder = fs::path(parts.front().path).parent_path().string();
    Resolver resolve = [&](const std::string& name) { return resolveUpward(ctx, folder, name); };
    attach(items, resolve, ctx, media);

    SourceKind kind = asciiLower(main->path).find("instagram") != std::string::npos
                          ? SourceKind::instagram
                          : SourceKind::messenger;
    std::vector<std::string> notes = {"Times converted from UTC to " + zoneID +
                                      ". Change Time zone if that is wrong."};
    ctx.sources.push_back(chatSource(kind, *main, std::move(media), std::move(items),
                                     std::move(title), std::move(notes)));
}

}  // namespace kinfolio::Scanner
