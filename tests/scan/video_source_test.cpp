#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/cli.h"
#include "example/example_video.h"
#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using ExampleFolder::VideoSpec;
using testing::TempFolder;

VideoSpec clipOf(double duration, const std::string& creationTime = "") {
    VideoSpec spec;
    spec.duration = duration;
    spec.creationTime = creationTime;
    return spec;
}

// Loose videos become the videos source, each with its length and a frame
// in the private cache; what cannot be read as a video is skipped with its
// reason, and the materials folder is left as it was.
TEST(VideoSource, ReadsClipsWithTheirDatesAndSkipsWhatIsNoVideo) {
    testing::ScopedCacheHome cache;
    TempFolder dir;
    dir.write("VID_20240816_190512.mp4", ExampleFolder::video(clipOf(2.5)));
    dir.write("Holiday/clip.mov", ExampleFolder::video(clipOf(42, "2025-06-14T10:00:00.000000Z")));
    VideoSpec voice = clipOf(2);
    voice.audioOnly = true;
    dir.write("voice.mp4", ExampleFolder::video(voice));
    std::string whole = ExampleFolder::video(clipOf(1.2));
    dir.write("broken.mp4", whole.substr(0, whole.size() / 2));
    dir.write("notes.mov", "Meet at 8, the usual place.\n");
    dir.write("empty.mp4", "");
    std::string before = testing::folderFingerprint(dir.path());

    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");

    const Source* videos = testing::sourceNamed(r, "Videos");
    ASSERT_TRUE(videos);
    EXPECT_EQ(videos->kind, SourceKind::videos);
    EXPECT_EQ(videos->detail, "2 videos \u00B7 Aug 2024 \u2013 Jun 2025");
    ASSERT_EQ(videos->items.size(), 2u);
    ASSERT_EQ(videos->files.size(), 2u);
    // In date order: the one dated by its name, then the recorded one.
    const Evidence& named = videos->items[0];
    EXPECT_EQ(named.kind, ItemKind::video);
    EXPECT_EQ(Calendar::format(named.date, "yyyy-MM-dd HH:mm:ss"), "2024-08-16 19:05:12");
    EXPECT_TRUE(named.dateIsEstimated);
    EXPECT_NEAR(named.details().duration.value_or(0), 2.5, 0.05);
    const Evidence& recorded = videos->items[1];
    EXPECT_EQ(Calendar::format(recorded.date, "yyyy-MM-dd HH:mm:ss"), "2025-06-14 10:00:00");
    EXPECT_FALSE(recorded.dateIsEstimated);
    EXPECT_NEAR(recorded.details().duration.value_or(0), 42, 0.05);
    for (const auto& item : videos->items) {
        auto file =
            std::find_if(videos->files.begin(), videos->files.end(),
                         [&](const FileRecord& f) { return f.sha256 == item.fileID.str(); });
        ASSERT_NE(file, videos->files.end());
        EXPECT_EQ(item.position, 1);
        EXPECT_EQ(item.details().imageURL,
                  cache.path() + "/kinfolio/frames/" + file->sha256.substr(0, 16) + ".png");
    }

    std::vector<SkippedFile> skipped = {
        {"broken.mp4", "Video could not be opened."},
        {"empty.mp4", "The file is empty. Copy it again from where it came from."},
        {"notes.mov", "Video could not be opened."},
        {"voice.mp4", "Video could not be opened."}};
    EXPECT_EQ(r.skipped, skipped);
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
}

// On the page: the video's line with its length, then its frame, or a note
// where no frame could be taken.
TEST(VideoSource, ExportShowsTheLengthAndTheFrameOrSaysThereIsNone) {
    testing::ScopedHome home;
    TempFolder materials, output;
    materials.write("VID_20250301_120000.mp4", ExampleFolder::video(clipOf(42)));
    // Pictures zeroed out: the clip opens, but no frame decodes.
    std::string blank = ExampleFolder::video(clipOf(3));
    size_t data = blank.find("mdat"), index = blank.find("moov");
    ASSERT_LT(data, index);
    std::fill(blank.begin() + static_cast<long>(data) + 4,
              blank.begin() + static_cast<long>(index) - 4, '\0');
    materials.write("VID_20250302_120000.mp4", blank);

    std::string target = output.path() + "/out.pdf";
    std::ostringstream out, err;
    int status =
        cli::run({"export", materials.path(), "-o", target, "--set", "photosPerMonth=0"}, out, err);
    ASSERT_EQ(status, 0) << err.str();

    std::string pdf = testing::readFile(target);
    auto read = testing::readPDF(pdf);
    std::string text = read.allFlat();
    EXPECT_NE(text.find("Video, 42 s"), std::string::npos) << text;
    EXPECT_NE(text.find("Video, 3 s"), std::string::npos) << text;
    EXPECT_NE(text.find("(No preview frame.)"), std::string::npos) << text;
    size_t images = 0;
    for (size_t page = 0; page < read.pages.size(); ++page)
        images += testing::imageResolutions(pdf, static_cast<int>(page)).size();
    EXPECT_EQ(images, 1u);
}

}  // namespace
}  // namespace kinfolio::Scanner
