#include "cli/json_output.h"

#include "importers/dates.h"

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
    j["dateText"] = Importer::format(item.date, "yyyy-MM-dd HH:mm:ss");
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

Json toJson(const Source& source) {
    Json files = Json::array(), items = Json::array();
    for (const auto& f : source.files)
        files.push_back(toJson(f));
    for (const auto& i : source.items)
        items.push_back(toJson(i));
    Json j = Json::object();
    j["id"] = source.id;
    j["kind"] = rawValue(source.kind);
    j["name"] = source.name;
    j["detail"] = source.detail;
    j["files"] = std::move(files);
    j["notes"] = source.notes;
    j["items"] = std::move(items);
    return j;
}

Json toJson(const ScanResult& scan) {
    Json sources = Json::array(), skipped = Json::array();
    for (const auto& s : scan.sources)
        sources.push_back(toJson(s));
    for (const auto& s : scan.skipped)
        skipped.push_back(Json{{"path", s.path}, {"reason", s.reason}});
    Json j = Json::object();
    j["folder"] = scan.folder;
    j["sources"] = std::move(sources);
    j["skipped"] = std::move(skipped);
    return j;
}

}  // namespace kinfolio::cli
