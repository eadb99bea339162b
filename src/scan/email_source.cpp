// Loose e-mails (.eml, .mbox, or e-mail text saved as .txt) all go into the
// one "Emails" group.
#include "importers/email.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

void readEmailText(ScanContext& ctx, Record& mail, std::string_view text) {
    MediaGroup& emails = ctx.group(SourceKind::emails);
    size_t before = emails.items.size();
    int64_t position = 0;
    Importer::eachEmail(text, [&](std::string_view message) {
        ++position;
        if (auto item = Importer::email(message, mail.file.sha256, position))
            emails.items.push_back(std::move(*item));
    });
    if (emails.items.size() == before) return ctx.skip(mail.path, "No dated email found.");
    emails.files.push_back(mail.file);
}

void readEmailFile(ScanContext& ctx, Record& mail, std::string_view bytes) {
    // A mailbox kept for decades mixes encodings. A file that is not UTF-8
    // or UTF-16 as a whole is split into its messages as bytes, and each
    // message decodes its own parts, so one old Latin-1 message costs at
    // most itself instead of the whole mailbox.
    std::string decoded;
    auto text = textOf(bytes, decoded);
    readEmailText(ctx, mail, text ? *text : bytes);
}

}  // namespace kinfolio::Scanner
