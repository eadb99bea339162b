// Loose e-mails (.eml, .mbox, or e-mail text saved as .txt) all go into the
// one "Emails" group.
#include "importers/email.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

void readEmailText(ScanContext& ctx, Record& mail, std::string_view text) {
    size_t before = ctx.emails.items.size();
    int64_t position = 0;
    Importer::eachEmail(text, [&](std::string_view message) {
        ++position;
        if (auto item = Importer::email(message, mail.file.sha256, position))
            ctx.emails.items.push_back(std::move(*item));
    });
    if (ctx.emails.items.size() == before) return ctx.skip(mail.path, "No dated email found.");
    ctx.emails.files.push_back(mail.file);
}

}  // namespace kinfolio::Scanner
