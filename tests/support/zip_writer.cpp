#include "support/zip_writer.h"

#include "example/zip_writer.h"

#include <zlib.h>

#include <stdexcept>

namespace kinfolio::testing {

namespace {

void put16(std::string& out, uint32_t v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
}
void put32(std::string& out, uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

}  // namespace

std::string makeZip(const std::vector<ZipMember>& members, const std::string& comment) {
    std::string out, directory;
    for (const auto& m : members) {
        std::string packed = m.method == 8 ? ZipWriter::rawDeflate(m.data) : m.data;
        uint32_t crc = static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(m.data.data()),
                                                   static_cast<uInt>(m.data.size())));
        uint32_t size = m.declaredSize.value_or(static_cast<uint32_t>(m.data.size()));
        auto offset = static_cast<uint32_t>(out.size());

        put32(out, 0x04034B50);
        put16(out, 20);
        put16(out, 0);
        put16(out, m.method);
        put32(out, 0);  // time and date
        put32(out, crc);
        put32(out, static_cast<uint32_t>(packed.size()));
        put32(out, size);
        put16(out, static_cast<uint32_t>(m.name.size()));
        put16(out, 0);
        out += m.name;
        out += packed;

        put32(directory, 0x02014B50);
        put16(directory, 20);
        put16(directory, 20);
        put16(directory, 0);
        put16(directory, m.method);
        put32(directory, 0);
        put32(directory, crc);
        put32(directory, static_cast<uint32_t>(packed.size()));
        put32(directory, size);
        put16(directory, static_cast<uint32_t>(m.name.size()));
        put16(directory, 0);  // extra
        put16(directory, 0);  // comment
        put16(directory, 0);  // disk
        put16(directory, 0);  // internal attributes
        put32(directory, 0);  // external attributes
        put32(directory, offset);
        directory += m.name;
    }
    auto directoryOffset = static_cast<uint32_t>(out.size());
    out += directory;
    put32(out, 0x06054B50);
    put16(out, 0);
    put16(out, 0);
    put16(out, static_cast<uint32_t>(members.size()));
    put16(out, static_cast<uint32_t>(members.size()));
    put32(out, static_cast<uint32_t>(directory.size()));
    put32(out, directoryOffset);
    put16(out, static_cast<uint32_t>(comment.size()));
    out += comment;
    return out;
}

}  // namespace kinfolio::testing
