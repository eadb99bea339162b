#include "importers/json_reader.h"

#include "model/evidence.h"

namespace kinfolio::Importer {

namespace {

// What went wrong, in words a person without a programmer's vocabulary can
// act on; a cut-short download is by far the most common cause.
std::string_view plainWords(simdjson::error_code error) {
    using namespace simdjson;
    switch (error) {
        case TAPE_ERROR:
            return "its brackets, commas or quote marks are out of place";
        case INCOMPLETE_ARRAY_OR_OBJECT:
            return "it ends before every bracket is closed";
        case UNCLOSED_STRING:
            return "a text is missing its closing quote mark";
        case EMPTY:
            return "the file holds no data";
        case DEPTH_ERROR:
            return "its data is nested too deeply";
        case STRING_ERROR:
            return "a text holds an escape sequence that is not valid";
        case UNESCAPED_CHARS:
            return "a text holds a control character that is not allowed there";
        case T_ATOM_ERROR:
        case F_ATOM_ERROR:
        case N_ATOM_ERROR:
            return "a word such as true, false or null is misspelt";
        case NUMBER_ERROR:
            return "a number is written wrongly";
        case NUMBER_OUT_OF_RANGE:
            return "a number is too large";
        case UTF8_ERROR:
            return "it is not valid UTF-8 text";
        case TRAILING_CONTENT:
            return "there is more text after the end of the data";
        default:
            return {};
    }
}

// A file cut short (an interrupted download or copy) rarely stops right
// after a closing bracket; the parser only sees brackets or a quote out of
// place, so the last character tells the likelier story.
bool stopsMidway(std::string_view data) {
    size_t last = data.find_last_not_of(" \t\r\n");
    return last != std::string_view::npos && data[last] != '}' && data[last] != ']';
}

}  // namespace

std::string jsonErrorMessage(simdjson::error_code error, std::string_view data) {
    using namespace simdjson;
    if (error == CAPACITY) return "The JSON file is too large to read.";
    if (error == MEMALLOC) return "There is not enough memory to read this JSON file.";
    bool unbalanced =
        error == TAPE_ERROR || error == INCOMPLETE_ARRAY_OR_OBJECT || error == UNCLOSED_STRING;
    if (unbalanced && stopsMidway(data))
        return "The JSON text is damaged: it stops in the middle, so the file was probably cut "
               "short.";
    std::string words(plainWords(error));
    if (words.empty()) {
        // Any other code: simdjson's own sentence, fitted into ours.
        words = simdjson::error_message(error);
        while (!words.empty() && (words.back() == '.' || words.back() == ' '))
            words.pop_back();
        if (!words.empty() && words[0] >= 'A' && words[0] <= 'Z') words[0] += 'a' - 'A';
    }
    return "The JSON text is damaged: " + words + ".";
}

JsonValue parseJson(simdjson::dom::document& into, std::string_view data, size_t slack) {
    // The parser's own buffers (the structural index, and the padded copy
    // when one is needed) are freed when it goes out of scope here; only the
    // document stays.
    simdjson::dom::parser parser;
    // Editors on some systems start a saved file with a byte-order mark;
    // JSON has no use for it and simdjson refuses it.
    if (data.starts_with("\xEF\xBB\xBF")) data.remove_prefix(3);
    bool copy = slack < simdjson::SIMDJSON_PADDING;
    JsonValue root;
    auto error = parser.parse_into_document(into, data.data(), data.size(), copy).get(root);
    if (error) throw EvidenceError::invalid(jsonErrorMessage(error, data));
    return root;
}

std::optional<JsonValue> member(JsonObject object, std::string_view key) {
    JsonValue value;
    if (object.at_key(key).get(value)) return std::nullopt;
    return value;
}

std::optional<std::string_view> stringMember(JsonObject object, std::string_view key) {
    std::string_view value;
    if (object.at_key(key).get_string().get(value)) return std::nullopt;
    return value;
}

std::optional<double> numberMember(JsonObject object, std::string_view key) {
    double value;
    if (object.at_key(key).get_double().get(value)) return std::nullopt;
    return value;
}

std::optional<JsonArray> arrayMember(JsonObject object, std::string_view key) {
    JsonArray value;
    if (object.at_key(key).get_array().get(value)) return std::nullopt;
    return value;
}

std::optional<JsonObject> objectMember(JsonObject object, std::string_view key) {
    JsonObject value;
    if (object.at_key(key).get_object().get(value)) return std::nullopt;
    return value;
}

}  // namespace kinfolio::Importer
