#pragma once

#include "model/json.h"
#include "model/source.h"

namespace kinfolio::cli {

// An item with all of its fields under their own names, plus "id" and
// "dateText" (yyyy-MM-dd HH:mm:ss as written).
Json toJson(const Evidence& item);
Json toJson(const FileRecord& file);
Json toJson(const Source& source);
Json toJson(const ScanResult& scan);

}  // namespace kinfolio::cli
