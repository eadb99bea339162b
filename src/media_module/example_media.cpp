#include <glib.h>

#include <exiv2/exiv2.hpp>
#include <memory>
#include <vips/vips8>

#include "media_module/media_module.h"

// The example's photos as a camera or a messenger writes them.
namespace kinfolio::MediaModule {

std::string jpegOf(const std::string& png) {
    startImageLibraries();
    vips::VImage image = vips::VImage::new_from_buffer(png.data(), png.size(), "");
    void* buffer = nullptr;
    size_t size = 0;
    image.write_to_buffer(".jpg[Q=85,strip]", &buffer, &size);
    std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
    return std::string(static_cast<const char*>(buffer), size);
}

std::string withExif(const std::string& jpeg,
                     const std::vector<std::pair<std::string, std::string>>& tags) {
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(jpeg.data()),
                                           static_cast<long>(jpeg.size()));
    image->readMetadata();
    Exiv2::ExifData exif = image->exifData();
    for (const auto& [key, value] : tags)
        exif[key] = value;
    image->setExifData(exif);
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    io.seek(0, Exiv2::BasicIo::beg);
    Exiv2::DataBuf data = io.read(static_cast<long>(io.size()));
    return std::string(reinterpret_cast<const char*>(data.pData_), static_cast<size_t>(data.size_));
}

}  // namespace kinfolio::MediaModule
