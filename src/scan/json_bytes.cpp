#include "scan/json_bytes.h"

namespace kinfolio::Scanner {

Importer::JsonValue parseAndRelease(simdjson::dom::document& into, Record& json) {
    MappedFile bytes = std::move(json.data);
    return Importer::parseJson(into, bytes.bytes(), bytes.readableSlack());
}

}  // namespace kinfolio::Scanner
