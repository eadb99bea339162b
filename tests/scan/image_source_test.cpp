#include "media/test_images.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

// Loose images become the photos and screenshots sources, in date order: a
// camera's date, else the date in the name marked as an estimate.
TEST(ImageSource, SortsImagesIntoPhotosAndScreenshotsWithTheirDates) {
    std::string jpeg = testing::encode(testing::solidImage(64, 48), ".jpg");
    testing::TempFolder dir;
    ScanResult r = testing::scanFiles(
        dir, {{"IMG_20250412_160000.jpg", jpeg},
              {"camera.jpg",
               testing::withExif(jpeg, {{"Exif.Photo.DateTimeOriginal", "2024:03:05 07:08:09"}})},
              {"Screenshot 2025-04-12 at 16.00.00.png",
               testing::encode(testing::solidImage(1170, 2532), ".png")},
              {"notes.jpg", "just some text\n"},
              {"empty.heic", ""}});
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "Screenshot 2025-04-12 at 16.00.00.png | Screenshots | 1 screenshot · Apr 2025",
                  "camera.jpg | Photos | 2 photos · Mar 2024 – Apr 2025",
                  "empty.heic | The file is empty. Copy it again from where it came from.",
                  "notes.jpg | Image could not be opened."}));
    const Source* photos = testing::sourceNamed(r, "Photos");
    EXPECT_EQ(photos->notes,
              std::vector<std::string>{"1 photo has no camera date; marked as estimated."});
    ASSERT_EQ(photos->items.size(), 2u);
    const Evidence& camera = photos->items[0];
    EXPECT_EQ(camera.kind, ItemKind::photo);
    EXPECT_EQ(Calendar::format(camera.date, "yyyy-MM-dd HH:mm:ss"), "2024-03-05 07:08:09");
    EXPECT_FALSE(camera.dateIsEstimated);
    EXPECT_EQ(camera.details().imageURL, dir.path() + "/camera.jpg");
    EXPECT_EQ(Calendar::format(photos->items[1].date, "yyyy-MM-dd HH:mm:ss"),
              "2025-04-12 16:00:00");
    EXPECT_TRUE(photos->items[1].dateIsEstimated);
    const Source* screenshots = testing::sourceNamed(r, "Screenshots");
    EXPECT_EQ(screenshots->items.at(0).kind, ItemKind::screenshot);
    EXPECT_TRUE(screenshots->notes.empty());
}

}  // namespace
}  // namespace kinfolio::Scanner
