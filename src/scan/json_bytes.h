#pragma once

#include <simdjson.h>

#include "importers/json_reader.h"
#include "scan/scan_context.h"

namespace kinfolio::Scanner {

// Parses a recorded JSON file where it is mapped (or from one padded copy)
// and then drops the mapping: the document holds its own copy of every
// string, and a large export should not keep its bytes and its document in
// memory at the same time. Throws EvidenceError.
Importer::JsonValue parseAndRelease(simdjson::dom::document& into, Record& json);

}  // namespace kinfolio::Scanner
