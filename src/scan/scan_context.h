#pragma once

#include <future>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/files.h"
#include "model/settings.h"
#include "model/source.h"

namespace kinfolio::Scanner {

// Why a file that another program changed while the scan read it is skipped.
inline constexpr const char* kChangedWhileRead = "The file changed while it was read. Scan again.";

// A file that went through the record step: its record and its bytes, read
// once and shared by hashing and the importer.
struct Record {
    std::string path;  // absolute
    FileRecord file;   // its sha256 is empty until the record is admitted
    MappedFile data;
    // A large file's fingerprint, taken on a thread of its own while the
    // file is read. Last, so it is waited for before the bytes go. Assigning
    // a record, or moving `data` out, would let them go first: neither is
    // done before the record is admitted.
    std::future<std::string> fingerprint;
};

// Items and files of one kind of loose media (photos, screenshots, ...),
// which become one source when the scan ends.
struct MediaGroup {
    std::vector<Evidence> items;
    std::vector<FileRecord> files;
    int estimatedDates = 0;
};

// The working state of one scan; readers add to it.
struct ScanContext {
    std::string folder;  // absolute, without a trailing "/"
    DateOrder order = DateOrder::automatic;
    std::string zone;
    bool recognizeText = false;

    std::vector<std::string> files;  // the listing, absolute paths
    std::vector<Source> sources;
    std::vector<SkippedFile> skipped;
    std::map<std::string, std::string> firstPathOfHash;
    std::set<int64_t> admittedSizes;  // a file of one of these sizes may be a copy
    std::set<std::string> consumed;   // absolute paths claimed by another file's import
    std::map<std::string, FileRecord> recordedPaths;

    std::map<SourceKind, MediaGroup> media;  // loose photos, videos, e-mails, ...

    MediaGroup& group(SourceKind kind) { return media[kind]; }

    // The path relative to the folder; a file outside it shows its name.
    std::string displayPath(const std::string& path) const;
    void skip(const std::string& path, std::string reason);
    // The record step: read, hash, and drop byte-identical copies. On failure
    // the file is skipped with its reason and none is returned.
    std::optional<Record> record(const std::string& path);
    // The same step in two halves, so a reader can read a large file while
    // its fingerprint is taken: open() maps the file and, with `alongside`,
    // when the file is large and there are cores to spare, starts the
    // fingerprint; admit() has it, and skips a copy of an earlier file or a
    // file changed meanwhile. Admitting twice changes nothing.
    std::optional<Record> open(const std::string& path, bool alongside = false);
    bool admit(Record& record);
    // The record of an attached file. A file attached twice (or to two chats)
    // keeps its first record instead of being listed as its own duplicate.
    std::optional<FileRecord> recordAttachment(const std::string& path);
};

// The text of a text file: UTF-8, else UTF-16; none in any other encoding.
std::optional<std::string> decodeText(std::string_view bytes);
// The same without a copy for UTF-8 (the usual case, and chats run to
// hundreds of megabytes): a view of the bytes, with a leading byte-order mark
// left out. UTF-16 is decoded into `decoded`, which the view then points into.
std::optional<std::string_view> textOf(std::string_view bytes, std::string& decoded);

}  // namespace kinfolio::Scanner
