#include "media/video.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "example/example_video.h"
#include "media/test_images.h"
#include "model/calendar.h"
#include "model/files.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using ExampleFolder::VideoSpec;

// A clip's bytes and an id for it, as the scan would give them.
struct Clip {
    std::string bytes, id;
    explicit Clip(const VideoSpec& spec)
        : bytes(ExampleFolder::video(spec)), id(sha256Hex(bytes)) {}
};

VideoSpec clipOf(double duration) {
    VideoSpec spec;
    spec.duration = duration;
    spec.framesPerSecond = 10;
    return spec;
}

// The scene is black with a white block over the top-left quarter of each
// side of the picture as it is shown.
void markTopLeft(cairo_t* cr, double) {
    double left, top, right, bottom;
    cairo_clip_extents(cr, &left, &top, &right, &bottom);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_paint(cr);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_rectangle(cr, 0, 0, right / 4, bottom / 4);
    cairo_fill(cr);
}

TEST(VideoFrame, IsUprightAndFitsTheLargestSide) {
    const std::tuple<const char*, int, int, int, double, int, int> cases[] = {
        {"a small clip keeps its size", 64, 48, 0, 1, 64, 48},
        {"a phone clip filmed upright is taller than wide", 64, 48, 90, 1, 48, 64},
        {"a clip filmed upside down", 64, 48, 180, 1, 64, 48},
        {"a clip turned the other way", 64, 48, 270, 1, 48, 64},
        {"wide pixels are shown wide", 64, 48, 0, 2, 128, 48},
        {"full HD fits within 1600 pixels", 1920, 1080, 0, 1, 1600, 900},
        {"full HD filmed upright", 1920, 1080, 90, 1, 900, 1600},
    };
    for (const auto& [name, width, height, rotation, pixelAspect, frameWidth, frameHeight] :
         cases) {
        SCOPED_TRACE(name);
        testing::ScopedCacheHome cache;
        VideoSpec spec = clipOf(0.2);
        spec.width = width;
        spec.height = height;
        spec.rotation = rotation;
        spec.pixelAspect = pixelAspect;
        spec.scene = markTopLeft;
        Clip clip(spec);
        auto info = Scanner::videoInfo(clip.bytes, clip.id);
        ASSERT_TRUE(info && info->frame);
        // The still frame as a user would see it: the PNG in the cache, decoded.
        testing::startVips();
        vips::VImage frame = vips::VImage::new_from_file(info->frame->c_str()).copy_memory();
        EXPECT_EQ(frame.width(), frameWidth);
        EXPECT_EQ(frame.height(), frameHeight);
        int nearX = frame.width() / 10, farX = frame.width() - 1 - nearX;
        int nearY = frame.height() / 10, farY = frame.height() - 1 - nearY;
        EXPECT_GT(frame.getpoint(nearX, nearY)[0], 200);
        EXPECT_LT(frame.getpoint(farX, nearY)[0], 50);
        EXPECT_LT(frame.getpoint(nearX, farY)[0], 50);
    }
}

TEST(VideoFrame, WithoutOneTheVideoIsStillRead) {
    Clip clip(clipOf(1.2));
    // Pictures that cannot be decoded: the stream's data zeroed, its index
    // (at the end of the file) intact.
    std::string blank = clip.bytes;
    size_t data = blank.find("mdat"), index = blank.find("moov");
    ASSERT_LT(data, index);
    std::fill(blank.begin() + static_cast<long>(data) + 4,
              blank.begin() + static_cast<long>(index) - 4, '\0');
    {
        testing::ScopedCacheHome cache;
        auto info = Scanner::videoInfo(blank, sha256Hex(blank));
        ASSERT_TRUE(info);
        EXPECT_NEAR(info->duration, 1.2, 0.05);
        EXPECT_FALSE(info->frame);
        EXPECT_TRUE(fs::is_empty(cache.path() + "/kinfolio/frames"));
    }
    {
        // No frames folder can be made: a file is in its place (permissions
        // would not stop a test run as root).
        testing::ScopedCacheHome cache;
        fs::create_directories(cache.path() + "/kinfolio");
        std::string inTheWay = cache.path() + "/kinfolio/frames";
        writeFileAtomically(inTheWay, "not a folder");
        auto info = Scanner::videoInfo(clip.bytes, clip.id);
        ASSERT_TRUE(info);
        EXPECT_EQ(testing::readFile(inTheWay), "not a folder");
        EXPECT_FALSE(info->frame);
    }
    {
        // An id that cannot name a file.
        testing::ScopedCacheHome cache;
        auto info = Scanner::videoInfo(clip.bytes, "../../escape");
        ASSERT_TRUE(info);
        EXPECT_FALSE(info->frame);
    }
}

TEST(VideoInfo, DateIsTheRecordedCreationTimeAsWritten) {
    // Name, creation time, local creation date, date read ("yyyy-MM-dd HH:mm:ss").
    const std::tuple<const char*, std::string, std::string, std::optional<std::string>> cases[] = {
        {"a phone's creation time", "2025-06-14T10:00:00.000000Z", "", "2025-06-14 10:00:00"},
        {"late in the evening", "2024-08-16T23:59:59Z", "", "2024-08-16 23:59:59"},
        {"no creation time", "", "", std::nullopt},
        // An iPhone's local time wins over the UTC creation time.
        {"an iPhone's local time", "2024-08-16T18:05:12.000000Z", "2024-08-16T19:05:12+0100",
         "2024-08-16 19:05:12"},
        {"local time west of UTC", "", "2024-08-16T19:05:12-0700", "2024-08-16 19:05:12"},
        {"an unreadable local time", "2024-08-16T18:05:12Z", "yesterday", "2024-08-16 18:05:12"},
    };
    for (const auto& [name, creationTime, localCreationDate, date] : cases) {
        SCOPED_TRACE(name);
        testing::ScopedCacheHome cache;
        VideoSpec spec = clipOf(0.5);
        spec.creationTime = creationTime;
        spec.localCreationDate = localCreationDate;
        Clip clip(spec);
        auto info = Scanner::videoInfo(clip.bytes, clip.id);
        ASSERT_TRUE(info);
        std::optional<std::string> shown;
        if (info->date) shown = Calendar::format(*info->date, "yyyy-MM-dd HH:mm:ss");
        EXPECT_EQ(shown, date);
    }
}

}  // namespace
}  // namespace kinfolio
