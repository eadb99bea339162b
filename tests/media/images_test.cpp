#include "media/images.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <ctime>

#include "media/test_images.h"
#include "model/calendar.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

using testing::encode;
using testing::solidImage;
using testing::withExif;

Instant at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return Calendar::makeDate(y, mo, d, h, mi, s).value();
}

// What this computer's clock showed at a Unix time, read independently of
// ICU through the C library.
Instant wallClock(time_t unixSeconds) {
    struct tm local {};
    ::localtime_r(&unixSeconds, &local);
    return instantFromUnix(static_cast<double>(unixSeconds)) + static_cast<double>(local.tm_gmtoff);
}

std::string jpeg(int w, int h, const std::vector<std::pair<std::string, std::string>>& tags = {}) {
    std::string bytes = encode(solidImage(w, h), ".jpg");
    return tags.empty() ? bytes : withExif(bytes, tags);
}

std::string png(int w, int h, const std::vector<std::pair<std::string, std::string>>& tags = {}) {
    std::string bytes = encode(solidImage(w, h), ".png");
    return tags.empty() ? bytes : withExif(bytes, tags);
}

struct ImageCase {
    const char* name;
    std::string bytes;
    bool opens = true, screenshot = false;
    std::optional<Instant> date = std::nullopt;      // read from the metadata
    std::optional<Instant> fallback = std::nullopt;  // from the name, else the modification time
    int width = 0, height = 0;                       // checked when set
};

TEST(ImageInfo, DatesAndScreenshotRules) {
    const time_t modified = 1685613600;  // 2023-06-01 10:00:00 UTC
    const auto none = std::nullopt;
    std::string noise = encode(testing::noiseImage(400, 300), ".jpg");
    const ImageCase cases[] = {
        {"IMG_20250412_160000.jpg", jpeg(64, 48), true, false, none, at(2025, 4, 12, 16), 64, 48},
        {"Screenshot 2025-04-12 at 16.00.00.png", png(64, 48), true, true, none,
         at(2025, 4, 12, 16)},
        // " um 16.00.00" is no time the name pattern knows: midnight.
        {"Bildschirmfoto 2025-04-12 um 16.00.00.png", png(64, 48), true, true, none,
         at(2025, 4, 12)},
        {"截屏 photo.jpg", jpeg(64, 48), true, true},
        {"phone.png", png(1170, 2532), true, true, none, none, 1170, 2532},
        {"sixteen-nine.png", png(1080, 1920)},
        {"landscape.png", png(2532, 1170)},
        {"camera.png", png(1170, 2532, {{"Exif.Image.Make", "Canon"}})},
        {"tall.jpg", jpeg(1170, 2532)},
        {"IMG_0001.jpg", jpeg(64, 48, {{"Exif.Photo.UserComment", "charset=Unicode Screenshot"}}),
         true, true},
        {"IMG_0002.jpg", jpeg(64, 48, {{"Exif.Photo.UserComment", "charset=Ascii Screenshots"}})},
        {"20251331.jpg", jpeg(64, 48)},
        {"both.jpg",
         jpeg(64, 48,
              {{"Exif.Photo.DateTimeOriginal", "2024:03:05 07:08:09"},
               {"Exif.Image.DateTime", "2024:12:24 18:00:00"}}),
         true, false, at(2024, 3, 5, 7, 8, 9)},
        {"edited.jpg", jpeg(64, 48, {{"Exif.Image.DateTime", "2024:12:24 18:00:00"}}), true, false,
         at(2024, 12, 24, 18)},
        {"blank-date.jpg", jpeg(64, 48, {{"Exif.Photo.DateTimeOriginal", "    :  :     :  :  "}})},
        {"notes.jpg", "Just some notes, not a picture.\n", false},
        {"empty.heic", "", false},
        {"cut-header.jpg", jpeg(64, 48).substr(0, 20), false},
        // Only the header is read: a file cut in its pixel data still opens.
        {"cut-pixels.jpg", noise.substr(0, noise.size() / 2), true, false, none, none, 400, 300},
    };
    testing::TempFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string path = folder.write(c.name, c.bytes);
        struct timespec times[2] = {{modified, 0}, {modified, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        auto info = Scanner::imageInfo(c.bytes, c.name);
        ASSERT_EQ(info.has_value(), c.opens);
        EXPECT_EQ(Scanner::fallbackDate(path), c.fallback.value_or(wallClock(modified)));
        if (!info) continue;
        EXPECT_EQ(info->isScreenshot, c.screenshot);
        EXPECT_EQ(info->date, c.date);
        if (c.width) {
            EXPECT_EQ(std::pair(info->width, info->height), std::pair(c.width, c.height));
        }
    }
}

TEST(ImageDateInName, AnUnreadableFileIsDatedNow) {
    using namespace std::chrono;
    auto now =
        static_cast<time_t>(duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
    Instant date = Scanner::fallbackDate("/nonexistent/kinfolio/holiday.jpg");
    EXPECT_NEAR(date, wallClock(now), 5.0);
}

}  // namespace
}  // namespace kinfolio
