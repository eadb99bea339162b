#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/evidence.h"

namespace kinfolio::Scanner {

// What the scan needs to know about an image before anything is drawn.
struct ImageInfo {
    // The camera's date as it wrote it, read in the zero-offset zone; none
    // when the file holds no readable date.
    std::optional<Instant> date;
    bool isScreenshot = false;
    // Pixels as stored, before any EXIF rotation is applied.
    int width = 0, height = 0;

    bool operator==(const ImageInfo&) const = default;
};

// Images whose header claims more pixels than this are never decoded. The
// largest phone sensors write 200-megapixel photos (16,320 × 12,240), which
// still pass; anything larger is a panorama no layout can use or a file made
// to exhaust memory, such as a 30,000 × 30,000 PNG of a few kilobytes.
inline constexpr int64_t kMaxImagePixels = 200'000'000;

// Reads the metadata of an image from its bytes (the scan has already mapped
// the file) and decides whether it is a screenshot; `fileName` is the file's
// name with its extension (a path is reduced to its last part). None when the
// bytes are no image this reader understands.
std::optional<ImageInfo> imageInfo(std::string_view bytes, const std::string& fileName);

// A date written in a file name, as phones and messengers write them
// ("IMG_20250412_160000.jpg", "Screenshot 2025-04-12 at 16.00.00.png"); the
// digits are kept as wall-clock time. None when there is none or it is no
// real date.
std::optional<Instant> dateInName(std::string_view name);

// The estimated date of a file without a recorded one: the date in its name,
// else its modification time as the clock of this computer showed it.
Instant fallbackDate(const std::string& path);

}  // namespace kinfolio::Scanner
