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

// The still frame as a user would see it: the PNG in the cache, decoded.
vips::VImage frameImage(const Scanner::VideoInfo& info) {
    Scanner::detail::startImageLibraries();
    return vips::VImage::new_from_file(info.frame.value().c_str()).copy_memory();
}

double greyAt(const vips::VImage& image, int x, int y) {
    return image.getpoint(x, y)[0];
}

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

struct GeometryCase {
    const char* name;
    int width, height, rotation;
    double pixelAspect;
    int frameWidth, frameHeight;
};

TEST(VideoFrame, IsUprightAndFitsTheLargestSide) {
    const GeometryCase cases[] = {
        {"a small clip keeps its size", 64, 48, 0, 1, 64, 48},
        {"a phone clip filmed upright is taller than wide", 64, 48, 90, 1, 48, 64},
        {"a clip filmed upside down", 64, 48, 180, 1, 64, 48},
        {"a clip turned the other way", 64, 48, 270, 1, 48, 64},
        {"wide pixels are shown wide", 64, 48, 0, 2, 128, 48},
        {"full HD fits within 1600 pixels", 1920, 1080, 0, 1, 1600, 900},
        {"full HD filmed upright", 1920, 1080, 90, 1, 900, 1600},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::ScopedCacheHome cache;
        VideoSpec spec = clipOf(0.2);
        spec.width = c.width;
        spec.height = c.height;
        spec.rotation = c.rotation;
        spec.pixelAspect = c.pixelAspect;
        spec.scene = markTopLeft;
        Clip clip(spec);
        auto info = Scanner::videoInfo(clip.bytes, clip.id);
        ASSERT_TRUE(info && info->frame);
        vips::VImage frame = frameImage(*info);
        EXPECT_EQ(frame.width(), c.frameWidth);
        EXPECT_EQ(frame.height(), c.frameHeight);
        int nearX = frame.width() / 10, farX = frame.width() - 1 - nearX;
        int nearY = frame.height() / 10, farY = frame.height() - 1 - nearY;
        EXPECT_GT(greyAt(frame, nearX, nearY), 200);
        EXPECT_LT(greyAt(frame, farX, nearY), 50);
        EXPECT_LT(greyAt(frame, nearX, farY), 50);
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

struct DateCase {
    const char* name;
    std::string creationTime;
    std::optional<std::string> date;  // "yyyy-MM-dd HH:mm:ss"
    std::string localCreationDate = "";
};

TEST(VideoInfo, DateIsTheRecordedCreationTimeAsWritten) {
    const DateCase cases[] = {
        {"a phone's creation time", "2025-06-14T10:00:00.000000Z", "2025-06-14 10:00:00"},
        {"late in the evening", "2024-08-16T23:59:59Z", "2024-08-16 23:59:59"},
        {"no creation time", "", std::nullopt},
        // An iPhone's local time wins over the UTC creation time.
        {"an iPhone's local time", "2024-08-16T18:05:12.000000Z", "2024-08-16 19:05:12",
         "2024-08-16T19:05:12+0100"},
        {"local time west of UTC", "", "2024-08-16 19:05:12", "2024-08-16T19:05:12-0700"},
        {"an unreadable local time", "2024-08-16T18:05:12Z", "2024-08-16 18:05:12", "yesterday"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::ScopedCacheHome cache;
        VideoSpec spec = clipOf(0.5);
        spec.creationTime = c.creationTime;
        spec.localCreationDate = c.localCreationDate;
        Clip clip(spec);
        auto info = Scanner::videoInfo(clip.bytes, clip.id);
        ASSERT_TRUE(info);
        std::optional<std::string> shown;
        if (info->date) shown = Calendar::format(*info->date, "yyyy-MM-dd HH:mm:ss");
        EXPECT_EQ(shown, c.date);
    }
}

}  // namespace
}  // namespace kinfolio
