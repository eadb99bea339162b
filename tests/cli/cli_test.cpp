#include "cli/cli.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "model/json.h"
#include "support/run_cli.h"
#include "support/temp_folder.h"

// The command line itself and its small commands: settings, example, guides.
namespace kinfolio::cli {
namespace {

namespace fs = std::filesystem;
using testing::runCli;

class Cli : public ::testing::Test {
protected:
    testing::ScopedHome home;  // the saved settings of this test alone
    testing::TempFolder dir;
};

TEST_F(Cli, EveryCommandLineEndsInItsHelpOrTheSentenceForWhatIsWrong) {
    // What a command line prints: the start of the help it asks for, or the
    // whole sentence that says what is wrong.
    using Args = std::vector<std::string>;
    struct Case {
        const char* name;
        Args args;
        int status;
        std::string printed;
    };
    std::string bad = dir.write("bad.json", R"({"tilte": "x"})");
    std::string wrong = dir.write("wrong.json", R"({"maxFileMB": "ten"})");
    std::string broken = dir.write("broken.json", R"({"title": )");
    std::string file = dir.write("file", "x");
    const Case cases[] = {
        {"tool help", Args{"--help"}, 0, "kinfolio-cli: turn a folder"},
        {"command help", Args{"scan", "--help"}, 0, "Usage: kinfolio-cli scan FOLDER"},
        {"unknown command", Args{"frobnicate"}, 2,
         "unknown command \"frobnicate\". Run kinfolio-cli --help to see the commands."},
        {"unknown option", Args{"scan", "--bogus"}, 2, "Unknown option --bogus."},
        {"option without value", Args{"scan", "--set"}, 2, "--set needs a value."},
        {"set without =", Args{"settings", "--set", "nokey"}, 2,
         "--set needs KEY=VALUE, for example --set paper=letter."},
        {"no folder", Args{"scan"}, 2, "give exactly one materials folder."},
        {"not a folder", Args{"select", "/no/folder"}, 2, "/no/folder is not a folder."},
        {"settings with an argument", Args{"settings", "x"}, 2, "settings takes no arguments."},
        {"unreadable settings file", Args{"settings", "--settings", "/no.json"}, 2,
         "Could not read the settings file /no.json."},
        {"settings file not JSON", Args{"settings", "--settings", broken}, 2,
         "The settings file " + broken + " is not valid JSON."},
        {"example without folder", Args{"example"}, 2,
         "give exactly one folder to write the example into."},
        {"example over a file", Args{"example", file}, 1,
         file + " is a file, not a folder. Choose an empty or new folder for the example."},
        {"two guides", Args{"guides", "a", "b"}, 2, "give at most one app."},
        {"unknown key in a file", Args{"settings", "--settings", bad}, 2,
         "There is no setting called \u201ctilte\u201d."},
        {"wrong kind in a file", Args{"settings", "--settings", wrong}, 2,
         "The setting \u201cmaxFileMB\u201d must be a whole number."},
        {"wrong kind in --set", Args{"settings", "--set", "maxFileMB=ten"}, 2,
         "The setting \u201cmaxFileMB\u201d must be a whole number from 0 to 1000000."},
    };
    for (const auto& c : cases) {
        auto r = runCli(c.args);
        EXPECT_EQ(r.status, c.status) << c.name;
        if (c.status == 0)
            EXPECT_TRUE(r.out.starts_with(c.printed) && r.err.empty()) << c.name << r.out;
        else
            EXPECT_EQ(r.out + r.err, "kinfolio-cli: " + c.printed + "\n") << c.name;
    }
    auto none = runCli({});  // the tool's help, as an error
    EXPECT_EQ(none.status, 2);
    EXPECT_TRUE(none.err.starts_with("kinfolio-cli: turn a folder"));
    EXPECT_NE(runCli({"--help"}).out.find("\n  select FOLDER [--json]"), std::string::npos);
}

TEST_F(Cli, SettingsPrintsTheFileOverTheDefaultsWithSetsApplied) {
    std::string good = dir.write("good.json", R"({"title": "Visa 2025", "maxFileMB": 10})");
    auto r = runCli({"settings", "--settings", good, "--set", "paper=letter", "--set",
                     "rangeStart=2025-01-31", "--set", "limitDates=true", "--set", "maxFileMB=12"});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
    EXPECT_EQ(j["title"], "Visa 2025");
    EXPECT_EQ(j["maxFileMB"], 12);
    EXPECT_EQ(j["messagesPerMonth"], 5);
    EXPECT_EQ(j["paper"], "letter");
    EXPECT_EQ(j["limitDates"], true);
    EXPECT_DOUBLE_EQ(j["rangeStart"].get<double>(), 759974400.0);
}

TEST_F(Cli, ExampleWritesTheSameTreeEveryTimeAndNeverOverOwnFiles) {
    auto tree = [](const fs::path& root) {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(root))
            if (entry.is_regular_file())
                files[fs::relative(entry.path(), root)] = testing::readFile(entry.path());
        return files;
    };
    fs::create_directories(dir.path() + "/empty");
    auto r = runCli({"example", dir.path() + "/empty"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "Wrote the example materials folder to " + dir.path() + "/empty.\n");
    ASSERT_EQ(runCli({"example", dir.path() + "/new/inner"}).status, 0);
    auto first = tree(dir.path() + "/empty");
    EXPECT_GE(first.size(), 12u);
    EXPECT_EQ(first, tree(dir.path() + "/new/inner"));
    EXPECT_TRUE(first.contains("WhatsApp Chat - Jonas Berg.zip"));

    dir.write("mine/notes.txt", "my own file");
    r = runCli({"example", dir.path() + "/mine"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("is not empty."), std::string::npos) << r.err;
    EXPECT_EQ(tree(dir.path() + "/mine").size(), 1u);
}

TEST_F(Cli, GuidesPrintAllOrOne) {
    auto r = runCli({"guides"});
    ASSERT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.starts_with("How do I export my chats?\n\nWhatsApp on iPhone\n"));
    for (const char* title : {"WhatsApp on Android", "Telegram", "Messenger", "Instagram", "LINE",
                              "iMessage (with Quillory)", "Chat spreadsheet (CSV)", "E-mail"})
        EXPECT_NE(r.out.find(std::string("\n") + title + "\n"), std::string::npos) << title;
    r = runCli({"guides", "telegram"});
    ASSERT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.starts_with("Telegram\n  1. "));
    EXPECT_NE(r.out.find("\u201cMachine-readable JSON\u201d"), std::string::npos);
    EXPECT_EQ(r.out.find("WhatsApp"), std::string::npos);
    r = runCli({"guides", "whatsapp"});  // two apps start so
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(
        r.err.starts_with("kinfolio-cli: no guide for \"whatsapp\". Choose one of: "
                          "whatsapp-iphone, whatsapp-android, "))
        << r.err;
}

}  // namespace
}  // namespace kinfolio::cli
