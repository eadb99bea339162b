#include "scan/whatsapp_source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "importers/whatsapp.h"
#include "importers/whatsapp_fast.h"
#include "model/calendar.h"
#include "model/files.h"
#include "model/text.h"
#include "scan/attach.h"
#include "scan/date_order.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 4> kTitlePrefixes = {
    "WhatsApp Chat with ", "WhatsApp Chat - ", "WhatsApp-Chat mit ", "Chat de WhatsApp con "};

bool isPrivateFolder(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid() &&
           (st.st_mode & 0077) == 0;
}

bool isOwnRegularFile(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_uid == ::getuid();
}

}  // namespace

std::string withoutTitlePrefix(const std::string& name) {
    for (auto prefix : kTitlePrefixes)
        if (startsWith(name, prefix)) return name.substr(prefix.size());
    return name;
}

void readWhatsAppChat(std::string_view text, const FileRecord& file, const std::string& name,
                      DateOrder order, const std::string& mediaDir, ScanContext& ctx,
                      MappedFile* mapped, const std::function<bool()>& admit) {
    std::vector<std::string> notes;
    Importer::ImportResult chat;
    try {
        // The items get their file's id below: it may still be being taken.
        auto reading = readInChatOrder(
            text, order, [&](DateOrder o) { return Importer::whatsapp(text, "", o, mapped); });
        chat = std::move(reading.result);
        if (reading.note) notes.push_back(std::move(*reading.note));
    } catch (const EvidenceError& e) {
        if (!admit || admit())
            ctx.skipped.push_back(SkippedFile{
                file.path, std::string("Looks like a WhatsApp chat, but: ") + e.what()});
        return;
    }
    if (admit && !admit()) return;
    // The items get their file's id in the same look that finds those
    // naming a file.
    const SharedText fileID(file.sha256);
    std::vector<size_t> named =
        itemsNamingFiles(chat.items, [&](Evidence& item) { item.fileID = fileID; });

    std::vector<FileRecord> media;
    const std::string inside = fs::path(mediaDir).lexically_normal().string() + "/";
    Resolver inMediaDir = [&](const std::string& attached) -> std::optional<std::string> {
        if (attached.empty()) return std::nullopt;
        // Nearly every name is a plain file name, already in normal form.
        if (attached.find('/') == std::string::npos && attached != "." && attached != "..")
            return inside + attached;
        // A name such as "../../x.jpg" must not reach outside the export.
        std::string path = (fs::path(mediaDir) / attached).lexically_normal().string();
        if (!startsWith(path, inside)) return std::nullopt;
        return path;
    };
    attach(chat.items, named, inMediaDir, ctx, media);

    for (auto& note : chat.notes)
        notes.push_back(std::move(note));
    ctx.sources.push_back(chatSource(SourceKind::whatsapp, file, std::move(media),
                                     std::move(chat.items), withoutTitlePrefix(name),
                                     std::move(notes)));
}

std::optional<ZipArchive::Entry> chatEntry(const ZipArchive& zip) {
    std::optional<ZipArchive::Entry> first;
    for (const auto& e : zip.entries()) {
        if (!endsWith(e.path, ".txt") || startsWith(e.path, "__MACOSX")) continue;
        if (endsWith(e.path, "_chat.txt") || e.path.find("WhatsApp") != std::string::npos) return e;
        if (!first) first = e;
    }
    return first;
}

std::optional<std::string> extractWhatsAppZip(const ZipArchive& zip, const std::string& id) {
    auto entry = chatEntry(zip);
    if (!entry) return std::nullopt;
    try {
        // Per user and closed to others: another local user must not be able
        // to plant a chat or a link in it.
        std::string folder = privateCacheDirectory("whatsapp") + "/" + id.substr(0, 16);
        std::string chat = (fs::path(folder) / entry->path).lexically_normal().string();
        if (!startsWith(chat, folder + "/")) return std::nullopt;
        if (!isPrivateFolder(folder) || !isOwnRegularFile(chat)) {
            // Unpacked beside its place and moved there whole, so an archive
            // that fails halfway, or a scan that is stopped, never leaves a
            // part of a chat that the next scan would take for all of it.
            std::string partial = folder + ".partial";
            std::error_code ec;
            fs::remove_all(folder, ec);
            fs::remove_all(partial, ec);
            try {
                zip.extract(partial);
            } catch (const EvidenceError&) {
                fs::remove_all(partial, ec);
                throw;
            }
            fs::rename(partial, folder, ec);
            if (ec) return std::nullopt;
        }
        auto mapped = MappedFile::open(chat);
        if (!mapped || !isValidUtf8(mapped->bytes())) return std::nullopt;
        if (!Importer::looksLikeWhatsApp(mapped->bytes())) return std::nullopt;
        return chat;
    } catch (const EvidenceError&) {
        return std::nullopt;
    }
}

std::optional<std::string> extractWhatsAppZip(const std::string& zipPath, const std::string& id) {
    try {
        return extractWhatsAppZip(ZipArchive::open(zipPath), id);
    } catch (const EvidenceError&) {
        return std::nullopt;
    }
}

void readWhatsAppText(ScanContext& ctx, Record& chat, std::string_view text) {
    // A loose "_chat.txt" is named after its folder, any other chat file
    // after itself.
    fs::path p(chat.path);
    std::string name =
        p.filename() == "_chat.txt" ? p.parent_path().filename().string() : p.stem().string();
    std::string mediaDir = fs::path(chat.path).parent_path().string();
    readWhatsAppChat(text, chat.file, name, ctx.order, mediaDir, ctx, &chat.data,
                     [&] { return ctx.admit(chat); });
}

void readZip(ScanContext& ctx, Record& zipRecord, std::string_view) {
    constexpr const char* kNoChat =
        "ZIP without a chat export inside. Unzip it into the folder if it holds photos or "
        "documents.";
    std::string name = fs::path(zipRecord.path).stem().string();
    try {
        ZipArchive zip = ZipArchive::fromMapped(std::move(zipRecord.data));
        auto chatPath = extractWhatsAppZip(zip, zipRecord.file.sha256);
        if (!chatPath) {
            // Tell a chat in another encoding apart from an archive without one.
            auto entry = chatEntry(zip);
            bool notUtf8 = entry && !isValidUtf8(zip.contents(*entry));
            return ctx.skip(zipRecord.path,
                            notUtf8 ? "Chat inside the ZIP is not UTF-8 text." : kNoChat);
        }
        auto text = MappedFile::open(*chatPath);
        if (!text) return ctx.skip(zipRecord.path, kNoChat);
        std::string mediaDir = fs::path(*chatPath).parent_path().string();
        readWhatsAppChat(text->bytes(), zipRecord.file, name, ctx.order, mediaDir, ctx, &*text);
    } catch (const EvidenceError&) {
        ctx.skip(zipRecord.path, kNoChat);
    }
}

}  // namespace kinfolio::Scanner
