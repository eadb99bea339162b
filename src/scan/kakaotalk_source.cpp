#include "importers/kakaotalk.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

namespace {

void skipKakaoTalk(ScanContext& ctx, const Record& chat, const EvidenceError& e) {
    ctx.skip(chat.path, std::string("Looks like a KakaoTalk chat, but: ") + e.what());
}

}  // namespace

void readKakaoTalkText(ScanContext& ctx, Record& chat, std::string_view text) {
    try {
        auto read = Importer::kakaoTalk(text, chat.file.sha256);
        ctx.sources.push_back(chatSource(SourceKind::kakaoTalk, chat.file, {},
                                         std::move(read.items), std::move(read.title), {}));
    } catch (const EvidenceError& e) {
        skipKakaoTalk(ctx, chat, e);
    }
}

void readKakaoTalkCsv(ScanContext& ctx, Record& csv, std::string_view text) {
    try {
        // Its file name is machine-made; the senders name the chat better.
        ctx.sources.push_back(spreadsheetChat(ctx, csv, text, SourceKind::kakaoTalk, ""));
    } catch (const EvidenceError& e) {
        skipKakaoTalk(ctx, csv, e);
    }
}

}  // namespace kinfolio::Scanner
