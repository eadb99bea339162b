#include "media/video.h"

#include "media/module.h"

namespace kinfolio::Scanner {

std::optional<VideoInfo> videoInfo(std::string_view bytes, const std::string& fileID) {
    return detail::mediaModule().videoInfo(bytes, fileID);
}

}  // namespace kinfolio::Scanner
