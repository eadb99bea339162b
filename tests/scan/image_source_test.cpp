#include <gtest/gtest.h>

#include "media/test_images.h"
#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

// Loose images become the photos and screenshots sources; what is no image
// is skipped with its reason.
TEST(ImageSource, SortsImagesIntoPhotosAndScreenshotsWithTheirDates) {
    TempFolder dir;
    std::string jpeg = testing::encode(testing::solidImage(64, 48), ".jpg");
    dir.write("IMG_20250412_160000.jpg", jpeg);
    dir.write("camera.jpg",
              testing::withExif(jpeg, {{"Exif.Photo.DateTimeOriginal", "2024:03:05 07:08:09"}}));
    dir.write("Screenshot 2025-04-12 at 16.00.00.png",
              testing::encode(testing::solidImage(1170, 2532), ".png"));
    dir.write("notes.jpg", "just some text\n");
    dir.write("empty.heic", "");

    std::string before = testing::folderFingerprint(dir.path());
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);

    const Source* photos = testing::sourceNamed(r, "Photos");
    const Source* screenshots = testing::sourceNamed(r, "Screenshots");
    ASSERT_TRUE(photos && screenshots);
    EXPECT_EQ(photos->detail, "2 photos \u00B7 Mar 2024 \u2013 Apr 2025");
    EXPECT_EQ(photos->notes,
              std::vector<std::string>{"1 photo has no camera date; marked as estimated."});
    ASSERT_EQ(photos->items.size(), 2u);
    // In date order: the camera's date, then the date in the other's name.
    const Evidence& camera = photos->items[0];
    EXPECT_EQ(camera.kind, ItemKind::photo);
    EXPECT_EQ(Calendar::format(camera.date, "yyyy-MM-dd HH:mm:ss"), "2024-03-05 07:08:09");
    EXPECT_FALSE(camera.dateIsEstimated);
    EXPECT_EQ(camera.details().imageURL, dir.path() + "/camera.jpg");
    EXPECT_EQ(Calendar::format(photos->items[1].date, "yyyy-MM-dd HH:mm:ss"),
              "2025-04-12 16:00:00");
    EXPECT_TRUE(photos->items[1].dateIsEstimated);

    ASSERT_EQ(screenshots->items.size(), 1u);
    EXPECT_EQ(screenshots->items[0].kind, ItemKind::screenshot);
    EXPECT_EQ(screenshots->detail, "1 screenshot \u00B7 Apr 2025");
    EXPECT_TRUE(screenshots->notes.empty());

    std::vector<SkippedFile> skipped = {
        {"empty.heic", "The file is empty. Copy it again from where it came from."},
        {"notes.jpg", "Image could not be opened."}};
    EXPECT_EQ(r.skipped, skipped);
}

}  // namespace
}  // namespace kinfolio::Scanner
