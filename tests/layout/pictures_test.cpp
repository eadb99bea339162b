#include <gtest/gtest.h>

#include <filesystem>

#include "media/test_images.h"
#include "support/layout_export.h"

// Pictures from the folder to the page, checked as a user meets them: the
// command line scans and exports, and the written PDF is read back.
namespace kinfolio {
namespace {

using Pictures = testing::LayoutExport;

TEST_F(Pictures, AScreenshotLineWithAHiddenWordIsBlackedOutAndTheOtherStaysReadable) {
    // A phone screenshot (tall PNG): two lines near its top.
    vips::VImage shot =
        testing::textImage(1170, 2532, {{"Call Sam at 8", 200}, {"See you", 600}}, 90);
    materials.write("Screenshot 2025-04-12 at 16.00.00.png", testing::encode(shot, ".png"));
    std::string before = testing::folderFingerprint(materials.path());

    std::string pdf = exportPDF("sam");
    auto read = testing::readPDF(pdf);
    int page = pageWith(read, "Screenshot \u00B7 1 line covered");
    ASSERT_GE(page, 0) << read.allFlat();

    // The picture is drawn at most 320 pt tall: 1170 × 2532 px at 0.126 pt
    // per pixel. At 2 px per point the first line's box spans rows 50 to 73
    // of the picture and the second stays clear of black bars.
    testing::Raster raster = testing::rasterise(pdf, page, 2);
    testing::Box whole{0, 0, raster.width - 1, raster.height - 1};
    testing::Box black = testing::boxOf(raster, 0x000000, whole);
    ASSERT_FALSE(black.empty()) << "no black box drawn";
    // One bar, about as wide as the line's text, and only one line tall.
    EXPECT_LT(black.maxY - black.minY, 40);
    EXPECT_GT(black.maxX - black.minX, 60);
    // Below the bar the second line is still there as dark text pixels that
    // form no wide black run.
    testing::Box below{black.minX, black.maxY + 10, black.maxX, black.maxY + 120};
    EXPECT_TRUE(testing::boxOf(raster, 0x000000, below).empty());
    int dark = 0;
    for (int y = below.minY; y <= below.maxY && y < raster.height; ++y)
        for (int x = below.minX; x <= below.maxX; ++x)
            if ((raster.at(x, y) & 0xFF) < 100) ++dark;
    EXPECT_GT(dark, 20) << "the second line should stay visible";

    EXPECT_EQ(testing::folderFingerprint(materials.path()), before);
}

// A photo is embedded without its camera data (maker, place). The window
// scans first and exports later: a photo deleted in between costs its
// picture, never the export.
TEST_F(Pictures, PhotosCarryNoExifAndOneDeletedAfterTheScanCostsOnlyItsPicture) {
    std::string photo = testing::withExif(testing::encode(testing::noiseImage(64, 48), ".jpg"),
                                          {{"Exif.Image.Make", "KinfolioTestCam"},
                                           {"Exif.GPSInfo.GPSLatitudeRef", "N"},
                                           {"Exif.GPSInfo.GPSLatitude", "51/1 30/1 0/1"}});
    ASSERT_NE(photo.find("KinfolioTestCam"), std::string::npos);
    materials.write("kept.jpg", photo);
    std::string gone =
        materials.write("gone.jpg", testing::encode(testing::noiseImage(48, 64), ".jpg"));
    std::string pdf = exportAfterScan([&] { std::filesystem::remove(gone); });
    auto read = testing::readPDF(pdf);
    size_t pictures = 0;
    for (size_t page = 0; page < read.pages.size(); ++page)
        pictures += testing::imageResolutions(pdf, static_cast<int>(page)).size();
    EXPECT_EQ(pictures, 1u);
    EXPECT_NE(pdf.find("\xFF\xD8\xFF"), std::string::npos) << "the photo is embedded as JPEG";
    EXPECT_EQ(pdf.find("Exif"), std::string::npos);
    EXPECT_EQ(pdf.find("KinfolioTestCam"), std::string::npos);
    EXPECT_NE(read.allFlat().find("gone.jpg"), std::string::npos)
        << "the appendix still lists the file that was read";
}

}  // namespace
}  // namespace kinfolio
