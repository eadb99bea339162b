#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "media/zip_archive.h"
#include "model/settings.h"
#include "scan/scan_context.h"

// WhatsApp exports in the folder scan: a loose chat text with its media
// beside it, or the ZIP the phone writes when media are attached.
namespace kinfolio::Scanner {

// Reads the chat and adds its source to ctx, or the chat file to the skipped
// files with its reason. Links its attachments (looked up in mediaDir; claimed in
// ctx.consumed, images recorded) and names it after `name` without the
// "WhatsApp Chat with " style prefix.
// `mapped`, when given, holds `text` and may release its pages while reading.
// `admit`, when given, is called once the text is read and before `file` is
// used; when it refuses, nothing is added (it has skipped the file itself).
void readWhatsAppChat(std::string_view text, const FileRecord& file, const std::string& name,
                      DateOrder order, const std::string& mediaDir, ScanContext& ctx,
                      MappedFile* mapped = nullptr, const std::function<bool()>& admit = {});

// The chat's name without the export's title prefix.
std::string withoutTitlePrefix(const std::string& name);

// The entry of the archive that holds the chat, if any: a ".txt" outside
// "__MACOSX", preferring "_chat.txt" or a name with "WhatsApp".
std::optional<ZipArchive::Entry> chatEntry(const ZipArchive& zip);

// Unpacks the archive into a private folder of the user's cache named by the
// first 16 digits of `id` (reused when the chat is already there) and returns
// the path of the chat file; none when the archive holds no readable chat.
std::optional<std::string> extractWhatsAppZip(const ZipArchive& zip, const std::string& id);
std::optional<std::string> extractWhatsAppZip(const std::string& zipPath, const std::string& id);

}  // namespace kinfolio::Scanner
