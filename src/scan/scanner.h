#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "model/files.h"
#include "model/settings.h"
#include "model/source.h"

// Reading a materials folder, read-only, into sources, items and skipped files.
namespace kinfolio::Scanner {

inline constexpr size_t kMaxFiles = 20000;

// Called after each file with the number handled so far and the total.
using Progress = std::function<void(size_t done, size_t total)>;

// Regular files below the folder (absolute paths): hidden files and folders
// skipped, symbolic links never followed, at most kMaxFiles, in the order of
// the file manager (case-insensitive, digit runs compared by value).
std::vector<std::string> listFiles(const std::string& folder);
// The same, with the links and the entries that are no regular file (pipes,
// devices) added to `others` (absolute paths) with the reason they are not read.
std::vector<std::string> listFiles(const std::string& folder, std::vector<SkippedFile>& others);

inline constexpr const char* kLinkReason =
    "A link to a file elsewhere. Copy the file itself into the folder to use it.";
inline constexpr const char* kSpecialReason = "Not an ordinary file, so it is not read.";

// The whole scan. It never fails as a whole: each problem with a file becomes
// a skipped entry with its reason.
ScanResult scan(const std::string& folder, DateOrder order, const std::string& zone,
                bool recognizeText = false, const Progress& progress = {});

// The source of one chat: main file first, then its media; the name falls
// back to the first two senders when the proposed one is empty, starts with
// "_" or is "messages".
Source chatSource(SourceKind kind, const FileRecord& file, std::vector<FileRecord> media,
                  std::vector<Evidence> items, std::string name, std::vector<std::string> notes);

using kinfolio::sha256Hex;

}  // namespace kinfolio::Scanner
