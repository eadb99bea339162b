// Readers whose formats Kinfolio does not read yet. Each one is replaced by
// its own unit when the format is supported; until then the file is skipped.
#include "scan/readers.h"

namespace kinfolio::Scanner {

namespace {
void notRead(ScanContext& ctx, Record& r) {
    ctx.skip(r.path, "Not a file type Kinfolio reads.");
}
}  // namespace

void readVideo(ScanContext& ctx, Record& video, std::string_view) {
    notRead(ctx, video);
}
void readDocument(ScanContext& ctx, Record& pdf, std::string_view) {
    notRead(ctx, pdf);
}

}  // namespace kinfolio::Scanner
