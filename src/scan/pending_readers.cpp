// Readers whose formats Kinfolio does not read yet. Each one is replaced by
// its own unit when the format is supported; until then the file is skipped.
#include "scan/readers.h"

namespace kinfolio::Scanner {

namespace {
void notRead(ScanContext& ctx, Record& r) {
    ctx.skip(r.path, "Not a file type Kinfolio reads.");
}
}  // namespace

void readZip(ScanContext& ctx, Record& zip) {
    notRead(ctx, zip);
}
void readWhatsAppText(ScanContext& ctx, Record& chat, const std::string&, const std::string&) {
    notRead(ctx, chat);
}
void readLineText(ScanContext& ctx, Record& chat, const std::string&) {
    notRead(ctx, chat);
}
void readEmailText(ScanContext& ctx, Record& mail, const std::string&) {
    notRead(ctx, mail);
}
void readChatCsv(ScanContext& ctx, Record& csv, const std::string&) {
    notRead(ctx, csv);
}
bool readQuilloryFolder(ScanContext&, const std::string&, const std::string&) {
    return false;
}
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
