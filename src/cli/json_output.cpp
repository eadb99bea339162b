#include "cli/json_output.h"

#include "model/calendar.h"

namespace kinfolio::cli {

namespace {
template <typename T>
Json optional(const std::optional<T>& v) {
    return v ? Json(*v) : Json(nullptr);
}
}  // namespace

Json toJson(const Evidence& item) {
    const EvidenceDetails& details = item.details();
    Json boxes = Json::array();
    for (const auto& b : details.textBoxes)
        boxes.push_back(Json{
            {"text", b.text}, {"x", b.x}, {"y", b.y}, {"width", b.width}, {"height", b.height}});
    Json j = Json::object();
    j["id"] = item.id();
    j["kind"] = rawValue(item.kind);
    j["date"] = item.date;
    j["dateText"] = Calendar::format(item.date, "yyyy-MM-dd HH:mm:ss");
    j["dateIsEstimated"] = item.dateIsEstimated;
    j["sender"] = item.sender;
    j["text"] = item.text;
    j["fileID"] = item.fileID.str();
    j["position"] = item.position;
    j["imageURL"] = optional(details.imageURL);
    j["attachmentName"] = optional(details.attachmentName);
    j["attachmentID"] = optional(details.attachmentID);
    j["textBoxes"] = std::move(boxes);
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

// `value` as dump(2) writes it nested `depth` levels deep. Written in one
// piece: a million items written a character at a time took seconds.
void writeNested(std::ostream& out, const Json& value, int depth) {
    std::string text = value.dump(2);
    std::string lineStart = "\n" + std::string(static_cast<size_t>(depth) * 2, ' ');
    std::string nested;
    nested.reserve(text.size() + text.size() / 8);
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        nested.append(text, start, end - start);
        nested += lineStart;
    }
    nested.append(text, start);
    out.write(nested.data(), static_cast<std::streamsize>(nested.size()));
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
            writeNested(out, value, 3);
            out << ",";
        }
        out << "\n      \"items\": [";
        for (size_t k = 0; k < source.items.size(); ++k) {
            out << (k ? ",\n        " : "\n        ");
            writeNested(out, toJson(source.items[k]), 4);
        }
        out << (source.items.empty() ? "]" : "\n      ]") << "\n    }";
    }
    out << (scan.sources.empty() ? "]" : "\n  ]") << ",\n  \"skipped\": ";
    writeNested(out, skippedJson(scan), 1);
    out << "\n}\n";
}

}  // namespace kinfolio::cli
