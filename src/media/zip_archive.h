#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/files.h"

namespace kinfolio {

// A reader of the classic ZIP layout (no ZIP64): the central directory, the
// bytes of one stored or deflated entry, and extraction below a folder. Every
// refusal is an EvidenceError whose message can be shown as a skip reason.
// An immutable value: copies share the archive's bytes, any thread may read.
class ZipArchive {
public:
    struct Entry {
        std::string path;  // UTF-8, ill-formed bytes repaired; folders end in "/"
        uint16_t method = 0;
        int64_t compressedSize = 0;
        int64_t size = 0;
        int64_t localOffset = 0;
    };

    // Maps the file; throws EvidenceError when it cannot be read or is no
    // ZIP this reader understands.
    static ZipArchive open(const std::string& path);
    // Over a file the scan has already mapped.
    static ZipArchive fromMapped(MappedFile file);
    // Over bytes already in memory.
    static ZipArchive fromBytes(std::string bytes);

    // The entries of the central directory, in its order. Throws EvidenceError.
    static std::vector<Entry> readDirectory(std::string_view data);

    const std::vector<Entry>& entries() const { return entries_; }
    std::string_view data() const { return data_; }

    // The uncompressed bytes of one entry. Throws EvidenceError.
    std::string contents(const Entry& entry) const;

    // Writes every file entry below `destination`, creating folders 0700 and
    // never writing outside it or through a symbolic link found there.
    // Throws EvidenceError at the first failure; what was written stays.
    void extract(const std::string& destination) const;

private:
    ZipArchive(std::shared_ptr<const void> owner, std::string_view data);

    std::shared_ptr<const void> owner_;  // keeps the mapping or the buffer alive
    std::string_view data_;
    std::vector<Entry> entries_;
};

}  // namespace kinfolio
