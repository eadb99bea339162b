#include "media_module/media_module.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vips/vips8>

#include "media/images.h"
#include "model/files.h"

namespace kinfolio::MediaModule {

using namespace Scanner;

namespace {

constexpr int kJpegQuality = 80;

// A short name for the mask's geometry. The text of a box does not change
// the pixels, so only the rectangles count. A collision would hand out a
// picture masked for other lines, so the name comes from SHA-256, not from a
// quick hash.
std::string maskName(const std::vector<TextBox>& mask) {
    std::string geometry;
    for (const auto& box : mask)
        for (double v : {box.x, box.y, box.width, box.height})
            geometry.append(reinterpret_cast<const char*>(&v), sizeof v);
    return sha256Hex(geometry).substr(0, 16);
}

std::optional<std::string> cachePath(const std::string& fileID, int maxPixel,
                                     const std::vector<TextBox>& mask) {
    if (!isCacheName(fileID)) return std::nullopt;
    std::string name = fileID + "-" + std::to_string(maxPixel);
    if (!mask.empty()) {
        std::string hash = maskName(mask);
        if (hash.empty()) return std::nullopt;
        name += "-" + hash;
    }
    auto folder = cacheFolder("pictures");
    if (!folder) return std::nullopt;
    return *folder + "/" + name + ".jpg";
}

bool looksLikeWholeJpeg(std::string_view b) {
    return b.size() > 4 && b.substr(0, 3) == "\xFF\xD8\xFF" && b.substr(b.size() - 2) == "\xFF\xD9";
}

// None for anything but a whole JPEG of a plausible size, so a damaged
// entry is made again rather than embedded.
std::optional<Picture> readCached(const std::string& path, int maxPixel) {
    auto file = MappedFile::open(path);
    if (!file || !looksLikeWholeJpeg(file->bytes())) return std::nullopt;
    try {
        // The header alone: a few hundred microseconds, against tens of
        // milliseconds for decoding the original again.
        auto header = vips::VImage::new_from_buffer(
            file->bytes().data(), file->size(), "",
            vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        int w = header.width(), h = header.height();
        if (w <= 0 || h <= 0 || std::max(w, h) > maxPixel) return std::nullopt;
        return Picture{std::string(file->bytes()), w, h};
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

// Upright, 8-bit sRGB with three bands, transparency on white: what a JPEG
// can hold and the page expects.
vips::VImage toPlainRGB(vips::VImage image) {
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.has_alpha())
        image = image.flatten(
            vips::VImage::option()->set("background", std::vector{255.0, 255.0, 255.0}));
    if (image.bands() > 3) image = image.extract_band(0, vips::VImage::option()->set("n", 3));
    if (image.format() != VIPS_FORMAT_UCHAR) image = image.cast(VIPS_FORMAT_UCHAR);
    return image;
}

Bitmap toBitmap(const vips::VImage& image) {
    size_t size = 0;
    std::unique_ptr<void, decltype(&g_free)> pixels(image.write_to_memory(&size), g_free);
    Bitmap bitmap;
    bitmap.width = image.width();
    bitmap.height = image.height();
    auto* begin = static_cast<unsigned char*>(pixels.get());
    bitmap.rgb.assign(begin, begin + size);
    return bitmap;
}

std::optional<Picture> make(const std::string& path, int maxPixel,
                            const std::vector<TextBox>& mask) {
    // libvips reads a trailing "[…]" of a file name as load options. No
    // image the scan routes here is named so, and any other file is no
    // picture anyway.
    if (path.empty() || path.back() == ']') return std::nullopt;
    try {
        // The header tells the size before a pixel is decoded: a few
        // kilobytes of PNG can claim a 30,000 × 30,000 image.
        auto header = vips::VImage::new_from_file(
            path.c_str(), vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        if (int64_t{header.width()} * header.height() > kMaxImagePixels) return std::nullopt;

        // Shrink-on-load: a 48-megapixel JPEG is decoded at an eighth of its
        // size, never whole. The EXIF orientation is applied. A truncated
        // file fails instead of coming out half grey; libvips 8.14 checks
        // that only when it reads from a file, not from memory.
        auto options = vips::VImage::option()
                           ->set("size", VIPS_SIZE_DOWN)
                           ->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
        // Colours are converted from an embedded profile (a phone's Display
        // P3) to sRGB, since the profile itself is stripped below. Without
        // one the pixels are sRGB already, and the conversion would double
        // the time of the whole picture.
        if (header.get_typeof(VIPS_META_ICC_NAME) != 0) options->set("export_profile", "srgb");
        vips::VImage image = vips::VImage::thumbnail(path.c_str(), maxPixel, options);
        image = toPlainRGB(image);

        Bitmap pixels;  // owns the masked pixels until they are encoded
        if (!mask.empty()) {
            pixels = masked(toBitmap(image), mask);
            image =
                vips::VImage::new_from_memory(pixels.rgb.data(), pixels.rgb.size(), pixels.width,
                                              pixels.height, 3, VIPS_FORMAT_UCHAR);
        }

        void* buffer = nullptr;
        size_t size = 0;
        image.write_to_buffer(".jpg", &buffer, &size,
                              vips::VImage::option()
                                  ->set("Q", kJpegQuality)
                                  ->set("strip", true)
                                  ->set("optimize_coding", true));
        std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
        if (!buffer || size == 0) return std::nullopt;
        return Picture{std::string(static_cast<const char*>(buffer), size), image.width(),
                       image.height()};
    } catch (const vips::VError&) {
        vips_error_clear();  // libvips keeps every message until cleared
        return std::nullopt;
    }
}

}  // namespace

std::optional<Picture> picture(const std::string& path, const std::string& fileID, int maxPixel,
                               const std::vector<TextBox>& mask) {
    if (maxPixel <= 0) return std::nullopt;
    startImageLibraries();
    auto cached = cachePath(fileID, maxPixel, mask);
    if (cached) {
        if (auto hit = readCached(*cached, maxPixel)) return hit;
    }
    auto made = make(path, maxPixel, mask);
    if (made && cached) {
        try {
            writeFileAtomically(*cached, made->jpeg);
        } catch (const std::exception&) {
            // Without a cache entry the picture is only made again next time.
        }
    }
    return made;
}

}  // namespace kinfolio::MediaModule
