#include "media_module/media_module.h"

#include <unicode/locid.h>

#include <algorithm>
#include <exiv2/exiv2.hpp>
#include <exiv2/matroskavideo.hpp>
#include <exiv2/quicktimevideo.hpp>
#include <exiv2/riffvideo.hpp>
#include <memory>
#include <tuple>
#include <vips/vips8>

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::MediaModule {

using namespace Scanner;

namespace {

// Looked for in the lowercased file name, in this order. The Chinese ones
// are what phones and desktops in China name their screenshots.
constexpr std::string_view kScreenshotMarkers[] = {
    "screenshot", "screen shot", "截屏", "屏幕快照", "截图", "bildschirmfoto", "capture d",
};

// The one comment a phone's screenshot function writes into the file.
constexpr std::string_view kScreenshotComment = "Screenshot";

std::string lowercased(std::string_view text) {
    icu::UnicodeString u = toUnicode(text);
    u.toLower(icu::Locale::getRoot());
    return toUtf8(u);
}

std::string_view extensionOf(std::string_view name) {
    size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

void dropTrailingNuls(std::string& text) {
    while (!text.empty() && text.back() == '\0')
        text.pop_back();
}

// The metadata the rules below look at.
struct Metadata {
    std::optional<std::string> dateText;
    std::optional<std::string> userComment;
    bool hasMake = false;
    int width = 0, height = 0;
};

// An ASCII tag's text; none when it is absent or holds something else.
std::optional<std::string> textTag(const Exiv2::ExifData& exif, const char* key) {
    auto it = exif.findKey(Exiv2::ExifKey(key));
    if (it == exif.end() || it->typeId() != Exiv2::asciiString) return std::nullopt;
    std::string text = it->toString();
    dropTrailingNuls(text);  // some writers pad the fixed-size date field
    return text;
}

// exiv2 also opens video containers, and its readers of them can loop for
// ever on a damaged file (a QuickTime box that claims the wrong size). A
// picture is never one; a video named like a picture gets no metadata.
bool isVideoContainer(int imageType) {
    constexpr int asf = 24;  // Exiv2::ImageType::asf, whose header needs exiv2's internal ones
    using namespace Exiv2::ImageType;
    return imageType == qtime || imageType == riff || imageType == mkv || imageType == asf;
}

// None when exiv2 does not know the format or the file is damaged beyond
// reading; the pixel size may still come from the image decoder then.
std::optional<Metadata> readMetadata(std::string_view bytes) {
    try {
        auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(bytes.data()),
                                               static_cast<long>(bytes.size()));
        if (image.get() == nullptr || isVideoContainer(image->imageType())) return std::nullopt;
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        Metadata m;
        // The original date alone decides when present as text, even when it
        // does not parse: a later edit's date is not the day of the picture.
        m.dateText = textTag(exif, "Exif.Photo.DateTimeOriginal");
        if (!m.dateText) m.dateText = textTag(exif, "Exif.Image.DateTime");
        m.hasMake = exif.findKey(Exiv2::ExifKey("Exif.Image.Make")) != exif.end();
        auto comment = exif.findKey(Exiv2::ExifKey("Exif.Photo.UserComment"));
        if (comment != exif.end()) {
            // CommentValue decodes the charset prefix, UCS-2 included.
            if (auto* value = dynamic_cast<const Exiv2::CommentValue*>(&comment->value())) {
                m.userComment = value->comment();
                dropTrailingNuls(*m.userComment);
            }
        }
        m.width = image->pixelWidth();
        m.height = image->pixelHeight();
        return m;
    } catch (const std::exception&) {  // Exiv2::AnyError, or memory for a lying size
        return std::nullopt;
    }
}

// The pixel size from the decoder's header reading, for the formats and
// files exiv2 gives no size for; none when no decoder accepts the bytes.
std::optional<std::pair<int, int>> decoderSize(std::string_view bytes) {
    try {
        auto image = vips::VImage::new_from_buffer(
            bytes.data(), bytes.size(), "",
            vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        return std::pair{image.width(), image.height()};
    } catch (const vips::VError&) {
        vips_error_clear();  // libvips keeps every message until cleared
        return std::nullopt;
    }
}

bool isScreenshot(const std::string& lowerName, const Metadata& m) {
    for (std::string_view marker : kScreenshotMarkers)
        if (lowerName.find(marker) != std::string::npos) return true;
    if (m.userComment == kScreenshotComment) return true;
    // A phone screen in portrait: 19.5:9 passes, 16:9 (1.78) does not. A
    // camera's PNG carries its maker and stays a photo.
    double ratio = static_cast<double>(m.height) / std::max(m.width, 1);
    bool tall = m.height > m.width && ratio > 1.9;
    return extensionOf(lowerName) == "png" && !m.hasMake && tall;
}

}  // namespace

std::optional<ImageInfo> imageInfo(std::string_view bytes, const std::string& fileName) {
    startImageLibraries();
    if (bytes.empty()) return std::nullopt;
    Metadata meta = readMetadata(bytes).value_or(Metadata{});
    // An image is what has a pixel size; bytes that only look like the start
    // of an image file have none.
    if (meta.width <= 0 || meta.height <= 0) {
        auto size = decoderSize(bytes);
        if (!size || size->first <= 0 || size->second <= 0) return std::nullopt;
        std::tie(meta.width, meta.height) = *size;
    }
    ImageInfo info;
    info.width = meta.width;
    info.height = meta.height;
    if (meta.dateText) info.date = Calendar::parse(*meta.dateText, "yyyy:MM:dd HH:mm:ss");
    info.isScreenshot = isScreenshot(lowercased(fileName), meta);
    return info;
}

}  // namespace kinfolio::MediaModule
