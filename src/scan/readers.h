#pragma once

#include <string>
#include <string_view>

#include "scan/scan_context.h"

// One reader per kind of file. The routing table of the scan decides which
// reader a file goes to; each reader adds what it reads to the context (a
// source, or items of a media group) or skips the file with its reason.
// `content` is the file's text or its bytes, as its route says.
namespace kinfolio::Scanner {

void readZip(ScanContext& ctx, Record& zip, std::string_view bytes);
void readWhatsAppText(ScanContext& ctx, Record& chat, std::string_view text);
void readLineText(ScanContext& ctx, Record& chat, std::string_view text);
void readKakaoTalkText(ScanContext& ctx, Record& chat, std::string_view text);
void readEmailText(ScanContext& ctx, Record& mail, std::string_view text);
// An .eml or .mbox file, in whatever encoding its messages were written.
void readEmailFile(ScanContext& ctx, Record& mail, std::string_view bytes);
void readTelegram(ScanContext& ctx, Record& json, std::string_view bytes);
void readMeta(ScanContext& ctx, Record& json, std::string_view bytes);
void readChatCsv(ScanContext& ctx, Record& csv, std::string_view text);
// KakaoTalk for Mac saves a chat as a spreadsheet: the columns Date, User and
// Message.
void readKakaoTalkCsv(ScanContext& ctx, Record& csv, std::string_view text);
// The source of a chat spreadsheet, with the note on its date order where its
// dates could be misread. Throws the importer's EvidenceError.
Source spreadsheetChat(const ScanContext& ctx, const Record& csv, std::string_view text,
                       SourceKind kind, std::string name);
// HTML is never imported; the reason tells the user what to do instead.
void readWebPage(ScanContext& ctx, Record& html, std::string_view bytes);
void readImage(ScanContext& ctx, Record& image, std::string_view bytes);
void readVideo(ScanContext& ctx, Record& video, std::string_view bytes);
void readDocument(ScanContext& ctx, Record& pdf, std::string_view bytes);

// A Quillory export folder: a "messages.csv" beside a "verification.txt"
// that starts as Quillory's report.
bool isQuilloryExport(const ScanContext& ctx, const std::string& file);
void readQuilloryFolder(ScanContext& ctx, const std::string& folder, const std::string& csvPath);

}  // namespace kinfolio::Scanner
