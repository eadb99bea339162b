#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kinfolio::testing {

// One member of an archive made by a test. Stored (0) and deflated (8)
// members are encoded for real; any other method keeps the data as it is.
struct ZipMember {
    ZipMember(std::string name, std::string data, uint16_t method = 8,
              std::optional<uint32_t> declaredSize = std::nullopt)
        : name(std::move(name)),
          data(std::move(data)),
          method(method),
          declaredSize(declaredSize) {}
    std::string name;
    std::string data;
    uint16_t method = 8;
    std::optional<uint32_t> declaredSize;  // a lying uncompressed size
};

// A classic ZIP file with a central directory and an optional comment.
std::string makeZip(const std::vector<ZipMember>& members, const std::string& comment = "");

}  // namespace kinfolio::testing
