#pragma once

#include <string>

#include "scan/scan_context.h"

namespace kinfolio::Scanner {

// Routes one listed file by its extension and, for text and data files, by
// its content, to the reader that fits, or skips it with the reason that fits.
void route(ScanContext& ctx, const std::string& path);

// Photos, videos and documents: read after every other file, so that a chat
// claims its attachments before they could be taken for loose media.
bool isMedia(const std::string& path);

// Finds the Quillory export folders of the listing and has them read first.
void readQuilloryFolders(ScanContext& ctx);

}  // namespace kinfolio::Scanner
