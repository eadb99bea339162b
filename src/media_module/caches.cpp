#include "media_module/media_module.h"

#include "model/evidence.h"
#include "model/files.h"

namespace kinfolio::MediaModule {

bool isCacheName(std::string_view id) {
    if (id.empty() || id.size() > 128) return false;
    for (char c : id) {
        bool ok = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                  c == '-' || c == '_';
        if (!ok) return false;
    }
    return true;
}

std::optional<std::string> cacheFolder(const std::string& sub) {
    try {
        return privateCacheDirectory(sub);
    } catch (const std::exception&) {  // EvidenceError, or a file system error
        return std::nullopt;
    }
}

}  // namespace kinfolio::MediaModule
