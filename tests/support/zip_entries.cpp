#include "support/zip_entries.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>

namespace kinfolio::testing {

namespace {

uint32_t le(const std::string& s, size_t at, int width) {
    uint32_t v = 0;
    for (int i = width - 1; i >= 0; --i)
        v = (v << 8) | static_cast<unsigned char>(s.at(at + static_cast<size_t>(i)));
    return v;
}

std::string inflateRaw(const std::string& in, size_t size) {
    std::string out(size, '\0');
    z_stream z{};
    inflateInit2(&z, -15);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
    z.avail_in = static_cast<uInt>(in.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    int rc = inflate(&z, Z_FINISH);
    inflateEnd(&z);
    EXPECT_EQ(rc, Z_STREAM_END);
    return out;
}

}  // namespace

std::map<std::string, std::string> zipEntries(const std::string& archive) {
    std::map<std::string, std::string> entries;
    if (archive.size() < 22) {
        ADD_FAILURE() << "too short for a ZIP";
        return entries;
    }
    size_t end = archive.size() - 22;  // no archive comment
    EXPECT_EQ(le(archive, end, 4), 0x06054b50u);
    uint32_t count = le(archive, end + 10, 2);
    size_t at = le(archive, end + 16, 4);
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(le(archive, at, 4), 0x02014b50u);
        uint32_t method = le(archive, at + 10, 2);
        uint32_t crc = le(archive, at + 16, 4);
        size_t compressed = le(archive, at + 20, 4), size = le(archive, at + 24, 4);
        size_t n = le(archive, at + 28, 2), m = le(archive, at + 30, 2),
               k = le(archive, at + 32, 2);
        size_t local = le(archive, at + 42, 4);
        std::string path = archive.substr(at + 46, n);
        EXPECT_EQ(le(archive, local, 4), 0x04034b50u);
        size_t data = local + 30 + le(archive, local + 26, 2) + le(archive, local + 28, 2);
        std::string raw = archive.substr(data, compressed);
        std::string content = method == 8 ? inflateRaw(raw, size) : raw;
        EXPECT_TRUE(method == 0 || method == 8) << path;
        EXPECT_EQ(content.size(), size) << path;
        EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(content.data()),
                        static_cast<uInt>(content.size())),
                  crc)
            << path;
        entries[path] = content;
        at += 46 + n + m + k;
    }
    return entries;
}

}  // namespace kinfolio::testing
