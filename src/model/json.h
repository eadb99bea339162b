#pragma once

#include <nlohmann/json.hpp>

namespace kinfolio {
// Objects keep their keys in insertion order, so what we write reads in the
// order a person expects (and the same way every time).
using Json = nlohmann::ordered_json;
}  // namespace kinfolio
