#pragma once

#include <ostream>

#include "model/json.h"
#include "model/source.h"

namespace kinfolio::cli {

// An item with all of its fields under their own names, plus "id" and
// "dateText" (yyyy-MM-dd HH:mm:ss as written).
Json toJson(const Evidence& item);
Json toJson(const FileRecord& file);
Json toJson(const Source& source);
Json toJson(const ScanResult& scan);

// The same JSON as toJson(scan).dump(2), written item by item: a chat of a
// million messages would otherwise be held twice more as a JSON tree.
void writeJson(std::ostream& out, const ScanResult& scan);

}  // namespace kinfolio::cli
