#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kinfolio {

// A whole file, read-only and memory-mapped (read into memory when mapping
// is not possible, as for an empty file or a pipe).
class MappedFile {
public:
    // None when the file cannot be opened or read.
    static std::optional<MappedFile> open(const std::string& path);

    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    std::string_view bytes() const { return {data_, size_}; }
    size_t size() const { return size_; }
    // Bytes after the end that may be read (zeros): the rest of the last page
    // of a mapping, none for a file read into memory. Parsers that read ahead
    // in wide blocks use it to work on the mapping without a copy.
    size_t readableSlack() const;
    // Lets the system drop the resident pages before `end`, a pointer into
    // bytes(); they are read from the file again if touched. A reader of a
    // large file calls it as it goes, so the file and what was read from it
    // are not in memory together. Does nothing for a file read into memory
    // or a pointer elsewhere.
    void releaseBefore(const char* end);
    // The same for the whole pages in [from, to): readers of separate pieces
    // of one file each let go of their own.
    void releaseBetween(const char* from, const char* to);
    // Whether the file changed while it was read: it shrank under the
    // mapping (the missing pages then read as zeros instead of stopping the
    // process with SIGBUS), or its size or modification time differ from
    // when it was opened. What was read from it is then not to be trusted.
    bool changed() const;

private:
    MappedFile() = default;
    void release();
    const char* data_ = nullptr;
    size_t size_ = 0;
    bool mapped_ = false;
    int guard_ = -1;  // the slot that watches the mapping for a shrinking file
    int fd_ = -1;     // kept open to compare the file's state afterwards
    int64_t openedSize_ = 0, openedTime_ = 0;
    std::string owned_;
};

// The SHA-256 of the bytes as 64 lowercase hexadecimal digits: the id of
// every file Kinfolio reads.
std::string sha256Hex(std::string_view bytes);

// Writes through a temporary file in the same folder and renames it into
// place, so a crash never leaves a half-written file. Throws EvidenceError.
void writeFileAtomically(const std::string& path, std::string_view bytes);

struct FileBytes {
    std::string path;
    std::string_view bytes;
};
// The same for files that belong together, as the parts of one document:
// every one is written in full before the first is put in place, so a failure
// leaves the files that were there before and no temporary file.
void writeFilesAtomically(const std::vector<FileBytes>& files);

// $XDG_CONFIG_HOME/kinfolio (default ~/.config/kinfolio); not created here.
std::string configDirectory();
// $XDG_CACHE_HOME/kinfolio (default ~/.cache/kinfolio), or the folder `sub`
// in it, created with mode 0700. One open to others is closed; one that
// belongs to someone else, or is a symbolic link, is refused. Throws
// EvidenceError.
std::string privateCacheDirectory(const std::string& sub = {});

// Creates the folder and its missing parents with the given mode. Throws EvidenceError.
void makeDirectories(const std::string& path, unsigned mode = 0755);

}  // namespace kinfolio
