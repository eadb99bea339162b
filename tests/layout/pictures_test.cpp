#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "media/test_images.h"
#include "support/layout_export.h"

// Pictures from the folder to the page, checked as a user meets them: the
// command line scans and exports, and the written PDF is read back.
namespace kinfolio {
namespace {

using Pictures = testing::LayoutExport;

// The pictures drawn on all pages of the document.
size_t imageCount(const std::string& pdf) {
    size_t count = 0;
    auto read = testing::readPDF(pdf);
    for (size_t page = 0; page < read.pages.size(); ++page)
        count += testing::imageResolutions(pdf, static_cast<int>(page)).size();
    return count;
}

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

TEST_F(Pictures, EmbeddedPhotosCarryNoExifAndABrokenOneCostsOnlyItself) {
    std::string photo = testing::withExif(testing::encode(testing::noiseImage(640, 480), ".jpg"),
                                          {{"Exif.Photo.DateTimeOriginal", "2025:04:12 16:00:00"},
                                           {"Exif.Image.Make", "KinfolioTestCam"},
                                           {"Exif.GPSInfo.GPSLatitudeRef", "N"},
                                           {"Exif.GPSInfo.GPSLatitude", "51/1 30/1 0/1"}});
    ASSERT_NE(photo.find("KinfolioTestCam"), std::string::npos);
    materials.write("holiday.jpg", photo);
    // A JPEG cut off in the middle of its pixels.
    std::string broken = testing::encode(testing::noiseImage(640, 480), ".jpg");
    materials.write("broken.jpg", broken.substr(0, broken.size() / 2));
    std::string before = testing::folderFingerprint(materials.path());

    std::string pdf = exportPDF();
    EXPECT_EQ(imageCount(pdf), 1u);
    EXPECT_NE(pdf.find("\xFF\xD8\xFF"), std::string::npos) << "the photo is embedded as JPEG";
    EXPECT_EQ(pdf.find("Exif"), std::string::npos);
    EXPECT_EQ(pdf.find("KinfolioTestCam"), std::string::npos);
    EXPECT_EQ(testing::folderFingerprint(materials.path()), before);
}

TEST_F(Pictures, AChatPhotoIsDrawnUnderItsBubbleAndNotListedAgain) {
    materials.write("Sam/_chat.txt",
                    "[05/01/2025, 09:04:00] Sam Lee: <attached: 00000003-PHOTO-2025-01-05.jpg>\n"
                    "[05/01/2025, 09:05:00] Alex Morgan: Lovely\n");
    materials.write("Sam/00000003-PHOTO-2025-01-05.jpg",
                    testing::encode(testing::noiseImage(800, 600), ".jpg"));
    std::string pdf = exportPDF();
    auto read = testing::readPDF(pdf);
    EXPECT_EQ(read.allFlat().find("Photo \u00B7"), std::string::npos) << "not a loose photo";
    EXPECT_EQ(imageCount(pdf), 1u);
    // Drawn at most half the text width wide: 800 px over 247.5 pt.
    for (size_t page = 0; page < read.pages.size(); ++page)
        for (double ppp : testing::imageResolutions(pdf, static_cast<int>(page)))
            EXPECT_NEAR(ppp, 800 / std::floor((595.28 - 100) * 0.5), 0.05);
}

// The window scans first and exports later: a photo deleted in between costs
// its picture, never the export.
TEST_F(Pictures, APhotoDeletedAfterTheScanCostsOnlyItsPicture) {
    materials.write("kept.jpg", testing::encode(testing::noiseImage(64, 48), ".jpg"));
    std::string gone =
        materials.write("gone.jpg", testing::encode(testing::noiseImage(48, 64), ".jpg"));
    std::string pdf = exportAfterScan([&] { std::filesystem::remove(gone); });
    EXPECT_EQ(imageCount(pdf), 1u);
    EXPECT_NE(testing::readPDF(pdf).allFlat().find("gone.jpg"), std::string::npos)
        << "the appendix still lists the file that was read";
}

}  // namespace
}  // namespace kinfolio
