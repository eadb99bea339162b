#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A small ZIP writer: the classic layout (no ZIP64), names in UTF-8, one
// fixed timestamp, so the same entries always give the same bytes.
namespace kinfolio::ZipWriter {

struct Entry {
    std::string path;  // "/"-separated, relative
    std::string data;
    bool deflate = true;  // raw deflate; false stores the bytes as they are
    // Archives made to test a reader: another compression method's number,
    // with `data` written as it is, and an uncompressed size that lies.
    std::optional<uint16_t> rawMethod = std::nullopt;
    std::optional<uint32_t> declaredSize = std::nullopt;
};

// The archive's bytes, entries in the order given, then the comment. Throws
// EvidenceError for an entry or archive too large for the classic layout.
std::string archive(const std::vector<Entry>& entries, const std::string& comment = "");

// Raw deflate (no zlib header or checksum), as ZIP entries hold it.
std::string rawDeflate(const std::string& data);

}  // namespace kinfolio::ZipWriter
