#include <filesystem>

#include "media/images.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

void readImage(ScanContext& ctx, Record& image, std::string_view bytes) {
    std::string name = std::filesystem::path(image.path).filename().string();
    auto info = imageInfo(bytes, name);
    if (!info) return ctx.skip(image.path, "Image could not be opened.");

    Evidence item;
    item.kind = info->isScreenshot ? ItemKind::screenshot : ItemKind::photo;
    item.fileID = image.file.sha256;
    item.position = 1;  // one item per file
    item.dateIsEstimated = !info->date;
    item.date = info->date ? *info->date : fallbackDate(image.path);
    item.detailsForWriting().imageURL = image.path;

    MediaGroup& group =
        ctx.group(info->isScreenshot ? SourceKind::screenshots : SourceKind::photos);
    if (item.kind == ItemKind::photo && item.dateIsEstimated) ++group.estimatedDates;
    group.items.push_back(std::move(item));
    group.files.push_back(image.file);
}

}  // namespace kinfolio::Scanner
