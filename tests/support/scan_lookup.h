#pragma once

#include <algorithm>
#include <string>

#include "model/source.h"

namespace kinfolio::testing {

// The first source of that name, or null.
inline const Source* sourceNamed(const ScanResult& scan, const std::string& name) {
    auto it = std::find_if(scan.sources.begin(), scan.sources.end(),
                           [&](const Source& s) { return s.name == name; });
    return it == scan.sources.end() ? nullptr : &*it;
}

}  // namespace kinfolio::testing
