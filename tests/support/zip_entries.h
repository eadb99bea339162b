#pragma once

#include <map>
#include <string>

namespace kinfolio::testing {

// Every entry of a classic ZIP archive by path, inflated, with each CRC-32
// checked. Fails the current test and returns what it read on a fault.
std::map<std::string, std::string> zipEntries(const std::string& archive);

}  // namespace kinfolio::testing
