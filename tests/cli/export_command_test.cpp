#include <gtest/gtest.h>

#include <filesystem>

#include "support/run_cli.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

namespace fs = std::filesystem;
using testing::runCli;

TEST(ExportCommand, RefusalsEndInAMessageAndWriteNothing) {
    testing::ScopedHome home;
    testing::TempFolder materials, output;
    // A month of chat, 12 messages, one of them saying the partner's name.
    std::string chat;
    for (int day = 1; day <= 12; ++day)
        chat += "[" + std::to_string(day) + "/01/2025, 09:00:00] " +
                (day % 2 ? "Sam Lee" : "Alex Morgan") + ": Message number " + std::to_string(day) +
                (day == 6 ? ", see you soon Sam" : "") + "\n";
    materials.write("Sam/_chat.txt", chat);

    fs::path cwd = fs::current_path();
    testing::TempFolder gone;
    using Args = std::vector<std::string>;
    struct Case {
        const char* name;
        std::string cwd;
        bool vanish;
        Args args;
        int status;
        std::string err;
    };
    const Case cases[] = {
        {"nothing selected", cwd, false,
         Args{"export", materials.path(), "-o", output.path(), "--set", "limitDates=true", "--set",
              "rangeStart=2030-01-01", "--set", "rangeEnd=2030-01-02"},
         1, "kinfolio-cli: Nothing is selected."},
        // The materials folder is the user's originals: only -o may put the PDF there.
        {"the current folder inside the materials", materials.path() + "/Sam", false,
         Args{"export", materials.path()}, 2,
         "kinfolio-cli: the current folder is inside the materials folder; give -o to say where "
         "the PDF goes."},
        // The current folder can vanish under a terminal (removed from the file
        // manager); the command must end with a message, not an abort.
        {"a vanished current folder", gone.path(), true, Args{"export", materials.path()}, 1,
         "kinfolio-cli: Could not finish: "},
    };
    std::string before = testing::folderFingerprint(materials.path());
    for (const auto& c : cases) {
        fs::current_path(c.cwd);
        if (c.vanish) fs::remove(c.cwd);
        auto r = runCli(c.args);
        fs::current_path(cwd);
        EXPECT_EQ(r.status, c.status) << c.name;
        EXPECT_TRUE(r.err.starts_with(c.err) && r.err.ends_with(".\n")) << c.name << r.err;
        EXPECT_TRUE(fs::is_empty(output.path())) << c.name;
        EXPECT_EQ(testing::folderFingerprint(materials.path()), before) << c.name;
    }
}

}  // namespace
}  // namespace kinfolio::cli
