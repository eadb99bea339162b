#include "importers/meta.h"

#include "model/text.h"

namespace kinfolio::Importer {

bool isMeta(std::string_view data) {
    std::string_view prefix = data.substr(0, 3000);
    if (!isValidUtf8(prefix)) return false;
    auto has = [&](std::string_view s) { return prefix.find(s) != std::string_view::npos; };
    return has("\"participants\"") && (has("\"messages\"") || has("\"sender_name\""));
}

}  // namespace kinfolio::Importer
