#include "cli/json_output.h"

#include <charconv>
#include <cmath>

#include "model/calendar.h"
#include "model/parallel.h"
#include "model/text.h"

namespace kinfolio::cli {

namespace {
template <typename T>
Json optional(const std::optional<T>& v) {
    return v ? Json(*v) : Json(nullptr);
}

Json boxesJson(const std::vector<TextBox>& textBoxes) {
    Json boxes = Json::array();
    for (const auto& b : textBoxes)
        boxes.push_back(Json{
            {"text", b.text}, {"x", b.x}, {"y", b.y}, {"width", b.width}, {"height", b.height}});
    return boxes;
}

}  // namespace

Json toJson(const Evidence& item) {
    const EvidenceDetails& details = item.details();
    Json j = Json::object();
    j["id"] = item.id();
    j["kind"] = rawValue(item.kind);
    j["date"] = item.date;
    j["dateText"] = Calendar::format(item.date, "yyyy-MM-dd HH:mm:ss");
    j["dateIsEstimated"] = item.dateIsEstimated;
    j["sender"] = item.sender.str();
    j["text"] = item.text;
    j["fileID"] = item.fileID.str();
    j["position"] = item.position;
    j["imageURL"] = optional(details.imageURL);
    j["attachmentName"] = optional(details.attachmentName);
    j["attachmentID"] = optional(details.attachmentID);
    j["textBoxes"] = boxesJson(details.textBoxes);
    j["duration"] = optional(details.duration);
    j["heading"] = details.heading;
    return j;
}

Json toJson(const FileRecord& file) {
    return Json{{"path", file.path}, {"sha256", file.sha256}, {"bytes", file.bytes}};
}

namespace {

// Everything of a source but its items, which come last.
Json sourceHead(const Source& source) {
    Json files = Json::array();
    for (const auto& f : source.files)
        files.push_back(toJson(f));
    Json j = Json::object();
    j["id"] = source.id;
    j["kind"] = rawValue(source.kind);
    j["name"] = source.name;
    j["detail"] = source.detail;
    j["files"] = std::move(files);
    j["notes"] = source.notes;
    return j;
}

Json skippedJson(const ScanResult& scan) {
    Json skipped = Json::array();
    for (const auto& s : scan.skipped)
        skipped.push_back(Json{{"path", s.path}, {"reason", s.reason}});
    return skipped;
}

// `value` as dump(2) writes it nested `depth` levels deep, in one piece: a
// million items written a character at a time took seconds.
std::string nested(const Json& value, int depth) {
    std::string text = value.dump(2);
    std::string lineStart = "\n" + std::string(static_cast<size_t>(depth) * 2, ' ');
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        out.append(text, start, end - start);
        out += lineStart;
    }
    out.append(text, start);
    return out;
}

// The items are written directly, as dump(2) would write their trees: building
// a tree per item for a million items took seconds. Strings that are not valid
// UTF-8, and numbers other than whole ones, are left to the library, so every
// byte is still the library's.

// Whether any of eight bytes is one JSON escapes.
bool needsEscape(uint64_t eight) {
    return anyByteBelow(eight, 0x20) || anyByteIs(eight, '"') || anyByteIs(eight, '\\');
}

void appendString(std::string& out, std::string_view s) {
    if (!isValidUtf8(s)) {
        out += Json(std::string(s)).dump();
        return;
    }
    static constexpr char kHex[] = "0123456789abcdef";
    out += '"';
    size_t plain = 0;
    for (size_t i = 0; i < s.size(); ++i) {
        // Eight bytes at a time while none is a control character, a quote
        // mark or a backslash: most text has none of them.
        while (i + 8 <= s.size() && !needsEscape(eightBytes(s.data() + i)))
            i += 8;
        if (i == s.size()) break;
        auto c = static_cast<unsigned char>(s[i]);
        if (c >= 0x20 && c != '"' && c != '\\') continue;
        out.append(s, plain, i - plain);
        plain = i + 1;
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                out += "\\u00";
                out += kHex[c >> 4];
                out += kHex[c & 0xF];
        }
    }
    out.append(s, plain, s.size() - plain);
    out += '"';
}

void appendNumber(std::string& out, double v) {
    char buffer[32];
    if (std::trunc(v) == v && std::fabs(v) < 1e15 && !(v == 0 && std::signbit(v))) {
        auto end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<int64_t>(v)).ptr;
        out.append(buffer, end);
        out += ".0";
    } else {
        out += Json(v).dump();
    }
}

void appendNumber(std::string& out, int64_t v) {
    char buffer[24];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, v).ptr);
}

void appendOptional(std::string& out, const std::optional<std::string>& v) {
    if (v)
        appendString(out, *v);
    else
        out += "null";
}

// One item as nested(toJson(item), depth) writes it.
void appendItem(std::string& out, const Evidence& item, int depth) {
    const std::string in(static_cast<size_t>(depth + 1) * 2, ' ');
    const EvidenceDetails& details = item.details();
    bool first = true;
    auto key = [&](const char* name) {
        out += first ? "\n" : ",\n";
        first = false;
        out += in;
        out += '"';
        out += name;
        out += "\": ";
    };
    out += '{';
    key("id");
    appendString(out, item.id());
    key("kind");
    appendString(out, rawValue(item.kind));
    key("date");
    appendNumber(out, item.date);
    key("dateText");
    appendString(out, Calendar::format(item.date, "yyyy-MM-dd HH:mm:ss"));
    key("dateIsEstimated");
    out += item.dateIsEstimated ? "true" : "false";
    key("sender");
    appendString(out, item.sender.str());
    key("text");
    appendString(out, item.text);
    key("fileID");
    appendString(out, item.fileID.str());
    key("position");
    appendNumber(out, item.position);
    key("imageURL");
    appendOptional(out, details.imageURL);
    key("attachmentName");
    appendOptional(out, details.attachmentName);
    key("attachmentID");
    appendOptional(out, details.attachmentID);
    key("textBoxes");
    if (details.textBoxes.empty()) {
        out += "[]";
    } else {
        out += nested(boxesJson(details.textBoxes), depth + 1);
    }
    key("duration");
    if (details.duration)
        appendNumber(out, *details.duration);
    else
        out += "null";
    key("heading");
    appendString(out, details.heading);
    out += '\n';
    out.append(static_cast<size_t>(depth) * 2, ' ');
    out += '}';
}

}  // namespace

Json toJson(const Source& source) {
    Json items = Json::array();
    for (const auto& i : source.items)
        items.push_back(toJson(i));
    Json j = sourceHead(source);
    j["items"] = std::move(items);
    return j;
}

Json toJson(const ScanResult& scan) {
    Json sources = Json::array();
    for (const auto& s : scan.sources)
        sources.push_back(toJson(s));
    Json j = Json::object();
    j["folder"] = scan.folder;
    j["sources"] = std::move(sources);
    j["skipped"] = skippedJson(scan);
    return j;
}

void writeJson(std::ostream& out, const ScanResult& scan) {
    out << "{\n  \"folder\": " << Json(scan.folder).dump() << ",\n  \"sources\": [";
    for (size_t i = 0; i < scan.sources.size(); ++i) {
        const Source& source = scan.sources[i];
        out << (i ? "," : "") << "\n    {";
        Json head = sourceHead(source);
        for (const auto& [key, value] : head.items()) {
            out << "\n      " << Json(key).dump() << ": ";
            out << nested(value, 3);
            out << ",";
        }
        out << "\n      \"items\": [";
        // Runs of items are written side by side on every core, then in order.
        constexpr size_t kRun = 8192;
        const size_t runs = Parallel::threads() * 2;
        std::vector<std::string> written(runs);
        const auto& items = source.items;
        for (size_t first = 0; first < items.size(); first += kRun * runs) {
            size_t count = std::min(runs, (items.size() - first + kRun - 1) / kRun);
            Parallel::forEach(count, [&](size_t r) {
                std::string& text = written[r];
                text.clear();
                size_t from = first + r * kRun, to = std::min(items.size(), from + kRun);
                for (size_t k = from; k < to; ++k) {
                    text += k ? ",\n        " : "\n        ";
                    appendItem(text, items[k], 4);
                }
            });
            for (size_t r = 0; r < count; ++r)
                out.write(written[r].data(), static_cast<std::streamsize>(written[r].size()));
        }
        out << (source.items.empty() ? "]" : "\n      ]") << "\n    }";
    }
    out << (scan.sources.empty() ? "]" : "\n  ]") << ",\n  \"skipped\": ";
    out << nested(skippedJson(scan), 1);
    out << "\n}\n";
}

}  // namespace kinfolio::cli
