#include "example/zip_writer.h"

#include <zlib.h>

#include <cstdint>
#include <limits>

#include "model/evidence.h"

namespace kinfolio::ZipWriter {

namespace {

// 20 April 2025, 12:00:00 in MS-DOS form: no clock of the machine leaks in.
constexpr uint16_t kDosTime = 12 << 11;
constexpr uint16_t kDosDate = ((2025 - 1980) << 9) | (4 << 5) | 20;
constexpr uint16_t kUtf8Names = 1 << 11;

void put16(std::string& out, uint32_t v) {
    out.push_back(static_cast<char>(v & 0xff));
    out.push_back(static_cast<char>((v >> 8) & 0xff));
}

void put32(std::string& out, uint32_t v) {
    put16(out, v & 0xffff);
    put16(out, v >> 16);
}

uint32_t checked32(size_t value) {
    if (value > std::numeric_limits<uint32_t>::max())
        throw EvidenceError::invalid("The ZIP archive would be too large.");
    return static_cast<uint32_t>(value);
}

}  // namespace

std::string rawDeflate(const std::string& data) {
    z_stream z{};
    if (deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw EvidenceError::invalid("Could not compress a file for the ZIP archive.");
    std::string out(deflateBound(&z, data.size()), '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    int rc = deflate(&z, Z_FINISH);
    out.resize(z.total_out);
    deflateEnd(&z);
    if (rc != Z_STREAM_END)
        throw EvidenceError::invalid("Could not compress a file for the ZIP archive.");
    return out;
}

std::string archive(const std::vector<Entry>& entries, const std::string& comment) {
    if (entries.size() > 0xffff)
        throw EvidenceError::invalid("The ZIP archive has too many files.");
    if (comment.size() > 0xffff)
        throw EvidenceError::invalid("The ZIP archive's comment is too long.");
    std::string out, directory;
    for (const auto& entry : entries) {
        uint32_t crc = static_cast<uint32_t>(crc32(
            0, reinterpret_cast<const Bytef*>(entry.data.data()), checked32(entry.data.size())));
        bool deflate = entry.deflate && !entry.rawMethod;
        std::string body = deflate ? rawDeflate(entry.data) : entry.data;
        uint16_t method = entry.rawMethod.value_or(deflate ? 8 : 0);
        uint32_t size = entry.declaredSize.value_or(checked32(entry.data.size()));
        uint32_t offset = checked32(out.size());

        auto common = [&](std::string& record) {
            put16(record, 20);  // version needed: 2.0
            put16(record, kUtf8Names);
            put16(record, method);
            put16(record, kDosTime);
            put16(record, kDosDate);
            put32(record, crc);
            put32(record, checked32(body.size()));
            put32(record, size);
            put16(record, static_cast<uint32_t>(entry.path.size()));
            put16(record, 0);  // extra field length
        };
        put32(out, 0x04034b50);
        common(out);
        out += entry.path;
        out += body;

        put32(directory, 0x02014b50);
        put16(directory, (3 << 8) | 20);  // made by: Unix, 2.0
        common(directory);
        put16(directory, 0);               // comment length
        put16(directory, 0);               // disk number
        put16(directory, 0);               // internal attributes
        put32(directory, 0100644u << 16);  // external: a regular file, rw-r--r--
        put32(directory, offset);
        directory += entry.path;
    }
    uint32_t directoryOffset = checked32(out.size());
    out += directory;
    put32(out, 0x06054b50);
    put16(out, 0);
    put16(out, 0);
    put16(out, static_cast<uint32_t>(entries.size()));
    put16(out, static_cast<uint32_t>(entries.size()));
    put32(out, checked32(directory.size()));
    put32(out, directoryOffset);
    put16(out, static_cast<uint32_t>(comment.size()));
    out += comment;
    checked32(out.size());
    return out;
}

}  // namespace kinfolio::ZipWriter
