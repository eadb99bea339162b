#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/evidence.h"

namespace kinfolio::Scanner {

// What the scan keeps of a video: when it was recorded, how long it runs and
// one still frame to show on the page.
struct VideoInfo {
    // The recorded creation date, wall-clock as written; none when the file
    // carries no readable one.
    std::optional<Instant> date;
    double duration = 0;  // seconds
    // Path of the still frame, a PNG in the private cache; none when no frame
    // could be taken or kept.
    std::optional<std::string> frame;
};

// The longest side of a still frame, in pixels; smaller videos keep their size.
inline constexpr int kMaxFrameSide = 1600;

// Reads a video from its bytes (the scan has already mapped the file) and
// takes its still frame, the one shown at half the length and at most one
// second in, upright and fitted within kMaxFrameSide. The frame is kept in
// the private cache by `fileID`, so a second call decodes nothing. None when
// the bytes cannot be read as a video with a picture and a length.
std::optional<VideoInfo> videoInfo(std::string_view bytes, const std::string& fileID);

}  // namespace kinfolio::Scanner
