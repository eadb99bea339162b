#pragma once

#include <cairo.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "media/module.h"

// Video clips made with FFmpeg's libraries (in the media module), for the
// example folder and the tests: the size, frame times, turn and date a phone
// would write.
namespace kinfolio::ExampleFolder {

struct VideoSpec {
    // Pixels as stored. A phone filming in portrait stores landscape pixels
    // and a turn for the player.
    int width = 64, height = 48;
    double framesPerSecond = 10;
    double duration = 1.2;  // seconds
    // Seconds, rising; when empty, one frame every 1 / framesPerSecond from
    // 0 until the duration.
    std::vector<double> frameTimes;
    // Clockwise degrees (0, 90, 180, 270) the player turns the stored
    // picture, written as the stream's display matrix.
    int rotation = 0;
    // How wide a stored pixel is shown against its height: 1 for phones,
    // 32/27 for a widescreen DV camcorder's 720 × 480.
    double pixelAspect = 1;
    // The container's "creation_time" tag ("2024-08-16T19:05:12.000000Z");
    // none when empty.
    std::string creationTime;
    // The local time with the phone's offset, as an iPhone writes it under
    // "com.apple.quicktime.creationdate" ("2024-08-16T19:05:12+0100"); none
    // when empty.
    std::string localCreationDate;
    // One stream of AAC silence and no picture, like a voice recording saved
    // as .mp4.
    bool audioOnly = false;
    // Draws the frame at a time, in the picture as it is shown: turned, so
    // width and height trade places for 90 and 270. Without one, each frame
    // is a flat grey of timeGrey(its time).
    std::function<void(cairo_t*, double seconds)> scene;
    // Seconds between key frames.
    double keyFrameInterval = 1;
};

// The grey level of a frame that shows its time, 10 levels apart for frames
// a tenth of a second apart (wrapping every 2.4 s).
inline int timeGrey(double seconds) {
    return 16 + static_cast<int>(std::llround(seconds * 100) % 240);
}

// The bytes of an .mp4 file (H.264, or MPEG-4 Part 2 where no H.264 encoder
// is installed). The same bytes on every run with the same libraries.
// Throws EvidenceError when the libraries cannot make it.
std::string video(const VideoSpec& spec);

// What the example takes from the media module: its videos, and its photos
// as a camera (JPEG with EXIF tags) or a messenger (JPEG without) writes them.
struct ExampleMediaFunctions {
    Scanner::detail::ModuleTable head;
    std::string (*video)(const VideoSpec& spec);
    std::string (*jpegOf)(const std::string& png);
    std::string (*withExif)(const std::string& jpeg,
                            const std::vector<std::pair<std::string, std::string>>& tags);
};
// The module's table, loaded on first use; throws EvidenceError when the
// module cannot be loaded.
const ExampleMediaFunctions& media();

}  // namespace kinfolio::ExampleFolder
