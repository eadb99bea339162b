#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "media/test_images.h"
#include "model/json.h"
#include "support/temp_folder.h"

// The media libraries live in a module loaded on first use. A program whose
// module is gone still reads every chat, and each picture, video or PDF it
// cannot read says so in a sentence for the user.
namespace kinfolio {
namespace {

namespace fs = std::filesystem;

const std::string kMissing =
    "Kinfolio could not read pictures, videos or PDF files because a part of Kinfolio itself is "
    "missing or damaged. Installing Kinfolio again puts it back.";

// What the program at `program` prints for `arguments`, and its exit status.
std::pair<std::string, int> run(const std::string& program, const std::string& arguments) {
    FILE* pipe = ::popen(("'" + program + "' " + arguments).c_str(), "r");
    std::string out;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    return {out, ::pclose(pipe)};
}

TEST(MediaModule, WithoutItChatsAreStillReadAndEachMediaFileSaysWhy) {
    testing::TempFolder temp;
    testing::ScopedHome home;
    temp.write("materials/chat/_chat.txt",
               "[01/02/2025, 09:15:00] Sam: Hello\n"
               "[01/02/2025, 09:16:00] Sam: <attached: 00000002-PHOTO-2025-02-01-09-16-00.png>\n");
    temp.write("materials/chat/00000002-PHOTO-2025-02-01-09-16-00.png",
               testing::encode(testing::solidImage(40, 30), ".png"));
    temp.write("materials/photo.png", testing::encode(testing::solidImage(30, 40), ".png"));
    // The same program, copied away from its module.
    fs::create_directory(temp.path() + "/alone");
    const std::string alone = temp.path() + "/alone/kinfolio-cli";
    fs::copy_file(KINFOLIO_CLI_BINARY, alone);

    const std::string materials = temp.path() + "/materials";
    const std::pair<std::string, Json> cases[] = {
        {KINFOLIO_CLI_BINARY, Json::array()},
        {alone, Json::array({{{"path", "photo.png"}, {"reason", kMissing}}})},
    };
    for (const auto& [program, skipped] : cases) {
        SCOPED_TRACE(program);
        auto [out, status] = run(program, "scan --json '" + materials + "' 2>/dev/null");
        ASSERT_EQ(status, 0) << out;
        Json scan = Json::parse(out);
        EXPECT_EQ(scan["skipped"], skipped);
        size_t items = 0;
        for (const auto& source : scan["sources"])
            items += source["items"].size();
        EXPECT_EQ(items, skipped.empty() ? 3u : 2u);  // the messages, and the photo when read
    }
    // The attached photo cannot be drawn: the export stops with the sentence.
    auto [said, status] =
        run(alone, "export '" + materials + "' -o '" + temp.path() + "/out.pdf' 2>&1");
    EXPECT_NE(status, 0);
    EXPECT_NE(said.find(kMissing), std::string::npos) << said;
    EXPECT_FALSE(fs::exists(temp.path() + "/out.pdf"));
}

}  // namespace
}  // namespace kinfolio
