#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "scan/scan_context.h"

namespace kinfolio::Scanner {

// What a reader is handed: the file's bytes, or its text (UTF-8, else
// UTF-16 decoded; a file in any other encoding is skipped before). A
// spreadsheet's text may also be Windows-1252, as older office programs
// save it.
enum class Content { bytes, text, spreadsheet };

// Chats are read first; loose media after every chat, so that an export
// claims its attachments before they could be taken for loose photos.
enum class Pass { chats, media };

// One row of the routing table. The rows of an extension are tried in table
// order; the first whose test accepts the content reads the file.
struct Route {
    std::vector<std::string_view> extensions;  // lower case, without the dot
    Content content = Content::bytes;
    // None: every file with one of these extensions.
    bool (*accepts)(std::string_view content) = nullptr;
    void (*read)(ScanContext& ctx, Record& file, std::string_view content) = nullptr;
    // With no reader: the reason such a file is skipped.
    std::string_view refusal = {};
    Pass pass = Pass::chats;
    // A chat's attachment of this type is drawn as a picture with its message.
    bool picture = false;
    // The reader calls ctx.admit() itself once it has read the file, so a
    // large one is read while its fingerprint is taken.
    bool admitsAfterReading = false;
};

// The routing table, in the order rows are tried.
const std::vector<Route>& routes();

// The rows for the file's extension, in table order; empty for a file
// Kinfolio does not read.
std::vector<const Route*> routesFor(const std::string& path);
bool isMedia(const std::string& path);
bool isPicture(const std::string& path);

// Routes one listed file by its extension and content to the reader that
// fits, or skips it with the reason that fits.
void route(ScanContext& ctx, const std::string& path);

// An export that is a folder rather than a file (a Quillory export: its
// messages, a verification report and attachments): recognised by one of
// its listed files and read as a whole, with every file it owns claimed,
// before the files are routed one by one.
struct FolderRoute {
    bool (*accepts)(const ScanContext& ctx, const std::string& file);
    void (*read)(ScanContext& ctx, const std::string& folder, const std::string& file);
};
const std::vector<FolderRoute>& folderRoutes();
// Has every folder-shaped export of the listing read.
void readExportFolders(ScanContext& ctx);

}  // namespace kinfolio::Scanner
