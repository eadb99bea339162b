#include "media/images.h"
#include "media/video.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

// The bytes the scan has mapped are what videoInfo reads: the file is opened
// once, and the frame kept under the file's id is taken from exactly the
// bytes that id was computed from, even when the file changes during the scan.
void readVideo(ScanContext& ctx, Record& video, std::string_view bytes) {
    auto info = videoInfo(bytes, video.file.sha256);
    if (!info) return ctx.skip(video.path, "Video could not be opened.");

    Evidence item;
    item.kind = ItemKind::video;
    item.fileID = video.file.sha256;
    item.position = 1;  // one item per file
    item.dateIsEstimated = !info->date;
    item.date = info->date ? *info->date : fallbackDate(video.path);
    EvidenceDetails& details = item.detailsForWriting();
    details.duration = info->duration;
    details.imageURL = info->frame;

    MediaGroup& group = ctx.group(SourceKind::videos);
    group.items.push_back(std::move(item));
    group.files.push_back(video.file);
}

}  // namespace kinfolio::Scanner
