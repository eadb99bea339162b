#include <sstream>

#include "cli/cli.h"
#include "example/example_video.h"
#include "support/pdf_reader.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using ExampleFolder::VideoSpec;

VideoSpec clipOf(double duration, const std::string& creationTime = "") {
    VideoSpec spec;
    spec.duration = duration;
    spec.creationTime = creationTime;
    return spec;
}

// Loose videos become the videos source, each with its length and a frame
// in the private cache, in date order: the one dated by its name, then the
// recorded one. What cannot be read as a video is skipped with its reason.
TEST(VideoSource, ReadsClipsWithTheirDatesAndSkipsWhatIsNoVideo) {
    testing::ScopedCacheHome cache;
    VideoSpec voice = clipOf(2);
    voice.audioOnly = true;
    std::string whole = ExampleFolder::video(clipOf(1.2));
    ScanResult r = testing::scanFiles(
        {{"VID_20240816_190512.mp4", ExampleFolder::video(clipOf(2.5))},
         {"Holiday/clip.mov", ExampleFolder::video(clipOf(42, "2025-06-14T10:00:00.000000Z"))},
         {"voice.mp4", ExampleFolder::video(voice)},
         {"broken.mp4", whole.substr(0, whole.size() / 2)},
         {"notes.mov", "Meet at 8, the usual place.\n"},
         {"empty.mp4", ""}});
    EXPECT_EQ(
        testing::shown(r),
        (std::vector<std::string>{
            "Holiday/clip.mov | Videos | 2 videos · Aug 2024 – Jun 2025",
            "broken.mp4 | Video could not be opened.",
            "empty.mp4 | The file is empty. Copy it again from where it came from.",
            "notes.mov | Video could not be opened.", "voice.mp4 | Video could not be opened."}));
    const Source& videos = r.sources.at(0);
    EXPECT_EQ(videos.kind, SourceKind::videos);
    const struct {
        const char* date;
        bool estimated;
        double duration;
    } expected[] = {{"2024-08-16 19:05:12", true, 2.5}, {"2025-06-14 10:00:00", false, 42}};
    ASSERT_EQ(videos.items.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const Evidence& item = videos.items[i];
        EXPECT_EQ(item.kind, ItemKind::video);
        EXPECT_EQ(Calendar::format(item.date, "yyyy-MM-dd HH:mm:ss"), expected[i].date);
        EXPECT_EQ(item.dateIsEstimated, expected[i].estimated);
        EXPECT_NEAR(item.details().duration.value_or(0), expected[i].duration, 0.05);
        EXPECT_EQ(item.position, 1);
        EXPECT_EQ(item.details().imageURL,
                  cache.path() + "/kinfolio/frames/" + item.fileID.str().substr(0, 16) + ".png");
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
