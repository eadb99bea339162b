// Readers whose formats Kinfolio does not read yet. Each one is replaced by
// its own unit when the format is supported; until then the file is skipped.
#include "scan/readers.h"

namespace kinfolio::Scanner {

namespace {
void notRead(ScanContext& ctx, Record& r) {
    ctx.skip(r.path, "Not a file type Kinfolio reads.");
}
}  // namespace

void readImage(ScanContext& ctx, Record& image) {
    notRead(ctx, image);
}
void readVideo(ScanContext& ctx, Record& video) {
    notRead(ctx, video);
}
void readDocument(ScanContext& ctx, Record& pdf) {
    notRead(ctx, pdf);
}

}  // namespace kinfolio::Scanner
