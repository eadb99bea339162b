#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/evidence.h"

namespace kinfolio::Scanner {

// A picture as the document embeds it: upright, sRGB, without metadata
// (no EXIF, no GPS position, no maker notes), encoded as a baseline JPEG.
struct Picture {
    std::string jpeg;
    int width = 0, height = 0;
};

// 8-bit RGB pixels, rows from the top, three bytes a pixel.
struct Bitmap {
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;
};

// Whole pixels counted from the top-left corner.
struct PixelRect {
    int left = 0, top = 0, width = 0, height = 0;
    bool operator==(const PixelRect&) const = default;
};

// The pixels that hide one recognised line in an image of width × height:
// the box grown by 4 pixels left and right and 3 above and below, so the
// edges of the letters are covered too, and kept within the image. None
// when nothing of it lies inside.
std::optional<PixelRect> maskRect(const TextBox& box, int width, int height);

// The image with every box's rectangle filled opaque black.
Bitmap masked(Bitmap image, const std::vector<TextBox>& boxes);

// The picture of an image file with its longer side at most `maxPixel`
// (smaller images keep their size), with the boxes of `mask` blacked out.
// None when the file cannot be read or decoded, is truncated, or claims
// more than kMaxImagePixels. Kept in the private cache by file id, size and
// mask, so a second call decodes nothing. Any thread may call it.
std::optional<Picture> picture(const std::string& path, const std::string& fileID, int maxPixel,
                               const std::vector<TextBox>& mask = {});

}  // namespace kinfolio::Scanner
