#include <filesystem>

#include "importers/csv.h"
#include "model/text.h"
#include "scan/attach.h"
#include "scan/readers.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

namespace fs = std::filesystem;

namespace {

bool isRegularFile(const fs::path& p) {
    std::error_code ec;
    return fs::is_regular_file(fs::symlink_status(p, ec));
}

// The export's PDF and verification report describe the chat for a reader of
// the export; they are not evidence of their own, and its attachments belong
// to the chat whether a message names them or not.
void claimExportFiles(ScanContext& ctx, const fs::path& dir) {
    std::string attachments = (dir / "attachments").string() + "/";
    for (const auto& path : ctx.files) {
        fs::path p(path);
        bool own = p.parent_path() == dir && (p.filename() == "verification.txt" ||
                                              asciiLower(p.extension().string()) == ".pdf");
        if (own || startsWith(path, attachments)) ctx.consumed.insert(path);
    }
}

}  // namespace

bool isQuilloryExport(const ScanContext&, const std::string& file) {
    fs::path p(file);
    if (p.filename() != "messages.csv") return false;
    auto verification = MappedFile::open((p.parent_path() / "verification.txt").string());
    return verification && isValidUtf8(verification->bytes()) &&
           startsWith(verification->bytes(), "Quillory verification report");
}

void readQuilloryFolder(ScanContext& ctx, const std::string& folder, const std::string& csvPath) {
    fs::path dir = fs::path(folder).lexically_normal();
    ctx.consumed.insert(csvPath);
    claimExportFiles(ctx, dir);

    auto csv = ctx.record(csvPath);
    if (!csv) return;
    auto text = decodeText(csv->data.bytes());
    if (!text) {
        ctx.skip(csvPath, "Text file in an unknown encoding.");
        return;
    }
    try {
        auto read = Importer::csv(*text, csv->file.sha256, ctx.order);
        // Names are usually bare file names inside "attachments"; some carry
        // the folder in front. Nothing outside the export is ever linked.
        std::string inside = dir.string() + "/";
        Resolver resolve = [&](const std::string& name) -> std::optional<std::string> {
            for (const fs::path& base : {dir / "attachments", dir}) {
                fs::path candidate = (base / name).lexically_normal();
                if (startsWith(candidate.string(), inside) && isRegularFile(candidate))
                    return candidate.string();
            }
            return std::nullopt;
        };
        std::vector<FileRecord> media;
        attach(read.items, resolve, ctx, media);
        std::string name = fs::path(csvPath).stem().string();
        ctx.sources.push_back(chatSource(SourceKind::quillory, csv->file, std::move(media),
                                         std::move(read.items), std::move(name),
                                         std::move(read.notes)));
    } catch (const EvidenceError& e) {
        ctx.skip(csvPath, std::string("Looks like a Quillory export, but: ") + e.what());
    }
}

}  // namespace kinfolio::Scanner
