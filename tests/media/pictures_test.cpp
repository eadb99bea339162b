#include "media/pictures.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "media/test_images.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::encode;
using testing::solidImage;

const std::string kID(64, 'a');

TEST(Picture, ShrinksTurnsAndNeverEnlarges) {
    vips::VImage wide =
        (solidImage(64, 32).cast(VIPS_FORMAT_USHORT) * 256)
            .cast(VIPS_FORMAT_USHORT)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    // Name, bytes, largest side asked for, width and height given.
    const std::tuple<const char*, std::string, int, int, int> cases[] = {
        {"landscape.jpg", encode(solidImage(4000, 3000), ".jpg"), 1600, 1600, 1200},
        {"portrait.png", encode(solidImage(1000, 2000), ".png"), 1600, 800, 1600},
        {"small.png", encode(solidImage(300, 200), ".png"), 1600, 300, 200},
        {"turned.jpg",
         testing::withExif(encode(solidImage(400, 300), ".jpg"), {{"Exif.Image.Orientation", "6"}}),
         1600, 300, 400},
        {"grey-alpha.png", encode(solidImage(500, 250, 2, 128), ".png"), 100, 100, 50},
        {"sixteen-bit.png", encode(wide, ".png"), 1600, 64, 32},
    };
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    char id = 'a';
    for (const auto& [name, bytes, maxPixel, width, height] : cases) {
        SCOPED_TRACE(name);
        std::string path = folder.write(name, bytes);
        auto p = Scanner::picture(path, std::string(64, id++), maxPixel);
        ASSERT_TRUE(p);
        EXPECT_EQ(std::pair(p->width, p->height), std::pair(width, height));
        vips::VImage image =
            vips::VImage::new_from_buffer(p->jpeg.data(), p->jpeg.size(), "").copy_memory();
        EXPECT_EQ(std::pair(image.width(), image.height()), std::pair(width, height));
        EXPECT_EQ(image.bands(), 3);
        EXPECT_EQ(image.format(), VIPS_FORMAT_UCHAR);
    }
}

TEST(PictureMask, GrowsEachBoxAndFlipsItToRows) {
    // 200 × 100 image; boxes from the lower-left corner.
    const std::vector<std::pair<TextBox, std::optional<Scanner::PixelRect>>> cases = {
        {{"mid", 0.25, 0.5, 0.5, 0.25}, Scanner::PixelRect{46, 22, 108, 31}},
        {{"corner", 0.0, 0.0, 0.1, 0.1}, Scanner::PixelRect{0, 87, 24, 13}},
        {{"outside", 2.0, 2.0, 0.1, 0.1}, std::nullopt},
        {{"broken", NAN, 0.5, 0.1, 0.1}, std::nullopt},
    };
    for (const auto& [box, rect] : cases) {
        SCOPED_TRACE(box.text);
        EXPECT_EQ(Scanner::maskRect(box, 200, 100), rect);
    }
}

TEST(Picture, RefusesADecompressionBombByItsHeader) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.path() + "/bomb.png";
    solidImage(30000, 30000, 1, 0).write_to_file((path + "[compression=1]").c_str());
    ASSERT_LT(fs::file_size(path), 10'000'000u);  // megabytes on disk, 900 megapixels inside

    struct rusage before {};
    ::getrusage(RUSAGE_SELF, &before);
    EXPECT_FALSE(Scanner::picture(path, kID, 1600));
    struct rusage after {};
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 200 * 1024);  // kilobytes
}

TEST(Picture, ADamagedCacheEntryIsMadeAgain) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.write("IMG_0001.jpg", encode(testing::noiseImage(800, 600), ".jpg"));
    auto good = Scanner::picture(path, kID, 400);
    ASSERT_TRUE(good);
    std::string entry = cache.path() + "/kinfolio/pictures/" + kID + "-400.jpg";
    ASSERT_EQ(testing::readFile(entry), good->jpeg);
    const std::vector<std::pair<const char*, std::string>> damages = {
        {"empty", ""},
        {"garbage", "not a picture"},
        {"cut", good->jpeg.substr(0, good->jpeg.size() / 2)},
        {"too large", encode(solidImage(800, 600), ".jpg")},
    };
    for (const auto& [name, damage] : damages) {
        SCOPED_TRACE(name);
        std::ofstream(entry, std::ios::binary | std::ios::trunc) << damage;
        auto again = Scanner::picture(path, kID, 400);
        ASSERT_TRUE(again);
        EXPECT_EQ(std::pair(again->width, again->height), std::pair(400, 300));
        EXPECT_EQ(testing::readFile(entry), again->jpeg);
    }
}

}  // namespace
}  // namespace kinfolio
