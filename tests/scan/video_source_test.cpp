#include "example/example_video.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

// The bytes of a clip of that length, recorded then (no such tag when empty).
std::string clip(double duration, const std::string& creationTime = "", bool audioOnly = false) {
    ExampleFolder::VideoSpec spec;
    spec.duration = duration;
    spec.creationTime = creationTime;
    spec.audioOnly = audioOnly;
    return ExampleFolder::video(spec);
}

// Loose videos become the videos source, each with its length and a frame
// in the private cache, in date order: the one dated by its name, then the
// recorded one. What cannot be read as a video is skipped with its reason.
TEST(VideoSource, ReadsClipsWithTheirDatesAndSkipsWhatIsNoVideo) {
    testing::ScopedCacheHome cache;
    std::string whole = clip(1.2);
    ScanResult r =
        testing::scanFiles({{"VID_20240816_190512.mp4", clip(2.5)},
                            {"Holiday/clip.mov", clip(42, "2025-06-14T10:00:00.000000Z")},
                            {"voice.mp4", clip(2, "", true)},
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
    const std::tuple<const char*, bool, double> expected[] = {{"2024-08-16 19:05:12", true, 2.5},
                                                              {"2025-06-14 10:00:00", false, 42}};
    ASSERT_EQ(videos.items.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const Evidence& item = videos.items[i];
        const auto& [date, estimated, duration] = expected[i];
        EXPECT_EQ(item.kind, ItemKind::video);
        EXPECT_EQ(Calendar::format(item.date, "yyyy-MM-dd HH:mm:ss"), date);
        EXPECT_EQ(item.dateIsEstimated, estimated);
        EXPECT_NEAR(item.details().duration.value_or(0), duration, 0.05);
        EXPECT_EQ(item.position, 1);
        EXPECT_EQ(item.details().imageURL,
                  cache.path() + "/kinfolio/frames/" + item.fileID.str().substr(0, 16) + ".png");
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
