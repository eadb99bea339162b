#pragma once

#include <simdjson.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Reading the JSON exports of chat apps. One parse per file into a DOM that
// keeps object keys in file order; numbers are read as doubles.
namespace kinfolio::Importer {

using JsonValue = simdjson::dom::element;
using JsonObject = simdjson::dom::object;
using JsonArray = simdjson::dom::array;

// Parses `data` into `into` and returns its root. simdjson reads up to
// SIMDJSON_PADDING bytes past the end of the text: when `slack` (bytes after
// `data` that may be read, see MappedFile::readableSlack) covers that, the
// text is parsed where it lies; otherwise it is copied once into a padded
// buffer that lives only during the parse. The document holds its own copy of
// every string, so the bytes may be released once this returns.
// A syntax error throws EvidenceError with a plain sentence.
JsonValue parseJson(simdjson::dom::document& into, std::string_view data, size_t slack = 0);

// The sentence shown for a parser error in `data`.
std::string jsonErrorMessage(simdjson::error_code error, std::string_view data);

// A member of an object when it exists and has the expected type; the first
// one when the key repeats.
std::optional<JsonValue> member(JsonObject object, std::string_view key);
std::optional<std::string_view> stringMember(JsonObject object, std::string_view key);
std::optional<double> numberMember(JsonObject object, std::string_view key);
std::optional<JsonArray> arrayMember(JsonObject object, std::string_view key);
std::optional<JsonObject> objectMember(JsonObject object, std::string_view key);

}  // namespace kinfolio::Importer
