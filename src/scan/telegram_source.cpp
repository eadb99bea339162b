#include <filesystem>

#include "importers/telegram.h"
#include "scan/attach.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

void readTelegram(ScanContext& ctx, Record& json, std::string_view) {
    std::vector<Importer::TelegramChat> chats;
    try {
        chats = Importer::telegram(json.data.bytes(), json.file.sha256, json.data.readableSlack(),
                                   &json.data);
    } catch (const EvidenceError& e) {
        return ctx.skip(json.path, std::string("Looks like a Telegram export, but: ") + e.what());
    }
    // Photo paths are relative to the export folder, which holds result.json.
    std::string folder = std::filesystem::path(json.path).parent_path().string();
    Resolver resolve = [&](const std::string& name) { return resolveUpward(ctx, folder, name); };
    for (auto& chat : chats) {
        std::vector<FileRecord> media;
        attach(chat.items, resolve, ctx, media);
        Source source = chatSource(SourceKind::telegram, json.file, std::move(media),
                                   std::move(chat.items), std::move(chat.name), {});
        // A whole-account export holds many conversations in one file; each
        // needs an identity of its own so it can be chosen on its own.
        if (chat.placeInList > 0) source.id += "#" + std::to_string(chat.placeInList);
        ctx.sources.push_back(std::move(source));
    }
}

}  // namespace kinfolio::Scanner
