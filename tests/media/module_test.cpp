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

// What `scan --json` of the program at `program` prints for `folder`.
Json scanWith(const std::string& program, const std::string& folder) {
    std::string command = "'" + program + "' scan --json '" + folder + "' 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string out;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    EXPECT_EQ(::pclose(pipe), 0) << out;
    return Json::parse(out);
}

TEST(MediaModule, WithoutItChatsAreStillReadAndEachMediaFileSaysWhy) {
    testing::TempFolder temp;
    testing::ScopedHome home;
    temp.write("materials/chat/_chat.txt", "[01/02/2025, 09:15:00] Sam: Hello\n");
    temp.write("materials/photo.png", testing::encode(testing::solidImage(40, 30), ".png"));
    // The same program, copied away from its module.
    fs::create_directory(temp.path() + "/alone");
    const std::string alone = temp.path() + "/alone/kinfolio-cli";
    fs::copy_file(KINFOLIO_CLI_BINARY, alone);

    const std::string materials = temp.path() + "/materials";
    const std::pair<std::string, Json> cases[] = {
        {KINFOLIO_CLI_BINARY, Json::array()},
        {alone, Json::array({{{"path", "photo.png"},
                              {"reason",
                               "Kinfolio could not read this file because a part of Kinfolio "
                               "itself is missing or damaged. Installing Kinfolio again puts it "
                               "back."}}})},
    };
    for (const auto& [program, skipped] : cases) {
        SCOPED_TRACE(program);
        Json scan = scanWith(program, materials);
        EXPECT_EQ(scan["skipped"], skipped);
        size_t items = 0;
        for (const auto& source : scan["sources"])
            items += source["items"].size();
        EXPECT_EQ(items, skipped.empty() ? 2u : 1u);  // the message, and the photo when read
    }
}

}  // namespace
}  // namespace kinfolio
