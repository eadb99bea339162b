#pragma once

// Images made by the tests themselves: solid or noisy pixels, lines of text,
// EXIF tags written with exiv2.

#include <glib.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>
#include <vips/vips8>

#include "example/example_parts.h"

namespace kinfolio::testing {

// libvips for the tests' own pictures; the program starts its copy in the
// media module.
inline void startVips() {
    static const bool started = vips_init("kinfolio-tests") == 0;
    if (!started) throw std::runtime_error("libvips did not start");
}

inline vips::VImage solidImage(int width, int height, int bands = 3, double value = 255) {
    startVips();
    return vips::VImage::black(width, height, vips::VImage::option()->set("bands", bands))
        .linear(1.0, value)
        .cast(VIPS_FORMAT_UCHAR);
}

// Noise compresses like a photograph, not like a flat colour.
inline vips::VImage noiseImage(int width, int height) {
    startVips();
    vips::VImage grey =
        vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", 60.0));
    return grey.bandjoin({grey.flip(VIPS_DIRECTION_HORIZONTAL), grey.flip(VIPS_DIRECTION_VERTICAL)})
        .cast(VIPS_FORMAT_UCHAR);
}

// Black lines of text on white; each line's top edge at the given row.
inline vips::VImage textImage(int width, int height,
                              const std::vector<std::pair<std::string, int>>& lines,
                              int points = 40) {
    vips::VImage page = solidImage(width, height, 1);
    for (const auto& [text, top] : lines) {
        vips::VImage ink = vips::VImage::text(
            text.c_str(), vips::VImage::option()
                              ->set("font", ("DejaVu Sans " + std::to_string(points)).c_str())
                              ->set("dpi", 72));
        page = page.insert((255 - ink).cast(VIPS_FORMAT_UCHAR), 40, top);
    }
    return page;
}

// Encoded with the saver the suffix names: ".jpg", ".png", ".jpg[Q=90]".
inline std::string encode(const vips::VImage& image, const char* suffix) {
    void* buffer = nullptr;
    size_t size = 0;
    image.write_to_buffer(suffix, &buffer, &size);
    std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
    return std::string(static_cast<const char*>(buffer), size);
}

// The bytes with these EXIF tags added; the example's photos are made the same way.
using ExampleFolder::withExif;

}  // namespace kinfolio::testing
