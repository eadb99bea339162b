#pragma once

#include <string>
#include <string_view>

#include "scan/scan_context.h"

// One reader per kind of file. The routing of the scan decides which reader
// a file goes to; each reader adds what it reads to the context (a source, or
// items of a media group) or skips the file with its reason.
namespace kinfolio::Scanner {

void readZip(ScanContext& ctx, Record& zip);
// `name` is the export's display name: the folder of a loose "_chat.txt",
// else the file name without its extension.
void readWhatsAppText(ScanContext& ctx, Record& chat, std::string_view text,
                      const std::string& name);
void readLineText(ScanContext& ctx, Record& chat, std::string_view text);
void readEmailText(ScanContext& ctx, Record& mail, std::string_view text);
void readTelegram(ScanContext& ctx, Record& json);
void readMeta(ScanContext& ctx, Record& json);
void readChatCsv(ScanContext& ctx, Record& csv, std::string_view text);
// A Quillory export folder: its messages.csv and its attachments. Returns
// false when the reader is not available, leaving the files to the routes.
bool readQuilloryFolder(ScanContext& ctx, const std::string& folder, const std::string& csvPath);
void readImage(ScanContext& ctx, Record& image);
void readVideo(ScanContext& ctx, Record& video);
void readDocument(ScanContext& ctx, Record& pdf);

}  // namespace kinfolio::Scanner
