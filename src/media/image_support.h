#pragma once

#include <optional>
#include <string>
#include <string_view>

// What the readers of pictures, videos and screenshots share: the private
// cache folders they keep their results in.
namespace kinfolio::Scanner::detail {

// Whether a file id may name a file in a cache folder. Ids are SHA-256 hex
// digits, but they arrive as plain strings: a "/" or ".." must never reach a
// path.
bool isCacheName(std::string_view id);

// `privateCacheDirectory(sub)`; none when the cache cannot be used, so the
// caller goes on without it.
std::optional<std::string> cacheFolder(const std::string& sub);

}  // namespace kinfolio::Scanner::detail
