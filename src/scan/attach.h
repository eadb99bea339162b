#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "scan/scan_context.h"

namespace kinfolio::Scanner {

// Gives the file an attachment name stands for, or none when it is missing.
using Resolver = std::function<std::optional<std::string>(const std::string& name)>;

// Links each item's attachmentName to its file: the file is claimed (so it is
// not listed again as loose media, whatever its type), and an image is
// recorded, added to `files`, and becomes the item's imageURL and attachmentID.
// A missing, non-image or unreadable file leaves the item a plain message.
void attach(std::vector<Evidence>& items, const Resolver& resolve, ScanContext& ctx,
            std::vector<FileRecord>& files);
// The same, for a caller that already knows which items name a file: their
// indices, in order, as itemsNamingFiles gives them.
void attach(std::vector<Evidence>& items, const std::vector<size_t>& named, const Resolver& resolve,
            ScanContext& ctx, std::vector<FileRecord>& files);

// The indices of the items that name an attachment, in order, looked for
// on every core; `alsoDo`, when given, is done to every item on the way.
std::vector<size_t> itemsNamingFiles(std::vector<Evidence>& items,
                                     const std::function<void(Evidence&)>& alsoDo = {});

// Looks `relative` up from `start` upward, folder by folder, never above the
// materials folder: exports name attachments relative to their own root,
// which may lie above the folder of the chat file.
std::optional<std::string> resolveUpward(const ScanContext& ctx, const std::string& start,
                                         const std::string& relative);

}  // namespace kinfolio::Scanner
