#include "importers/email.h"

#include "model/text.h"

namespace kinfolio::Importer {

bool looksLikeEmail(std::string_view text) {
    std::string head = asciiLower(prefixCodePoints(text, 8000));
    auto has = [&](std::string_view s) { return head.find(s) != std::string::npos; };
    bool sender = startsWith(head, "from ") || has("\nfrom:") || startsWith(head, "from:");
    if (!sender || !has("date:")) return false;
    return has("\nsubject:") || has("\nto:");
}

}  // namespace kinfolio::Importer
