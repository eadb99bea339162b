#include "importers/line.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

void readLineText(ScanContext& ctx, Record& chat, std::string_view text) {
    try {
        auto read = Importer::line(text, chat.file.sha256);
        ctx.sources.push_back(chatSource(SourceKind::line, chat.file, {}, std::move(read.items),
                                         std::move(read.title), {}));
    } catch (const EvidenceError& e) {
        ctx.skip(chat.path, std::string("Looks like a LINE chat, but: ") + e.what());
    }
}

}  // namespace kinfolio::Scanner
