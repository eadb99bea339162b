#include "cli/cli.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "model/json.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

using testing::TempFolder;

struct Outcome {
    int status;
    std::string out, err;
};

// The saved settings live in a private config folder per test.
class Cli : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1); }
    void TearDown() override { ::unsetenv("XDG_CONFIG_HOME"); }

    Outcome run(std::vector<std::string> args) {
        std::ostringstream out, err;
        int status = cli::run(args, out, err);
        return {status, out.str(), err.str()};
    }

    TempFolder config;
};

TEST_F(Cli, ScanJsonListsSkippedFilesWithTheirReasons) {
    TempFolder dir;
    dir.write("notes.docx", "x");
    dir.write("sub/page.html", "<html></html>");
    Outcome r = run({"scan", dir.path(), "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
    EXPECT_EQ(j["folder"], dir.path());
    EXPECT_TRUE(j["sources"].empty());
    ASSERT_EQ(j["skipped"].size(), 2u);
    EXPECT_EQ(j["skipped"][0]["path"], "notes.docx");
    EXPECT_EQ(j["skipped"][1]["reason"], "Web page; Kinfolio does not read HTML.");
}

TEST_F(Cli, ScanTextNamesTheSkippedFiles) {
    TempFolder dir;
    dir.write("notes.docx", "x");
    Outcome r = run({"scan", dir.path()});
    ASSERT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("Nothing Kinfolio can read here"), std::string::npos);
    EXPECT_NE(r.out.find("notes.docx\n    Not a file type Kinfolio reads."), std::string::npos);
}

TEST_F(Cli, ScanNeedsAnExistingFolder) {
    Outcome r = run({"scan", "/nonexistent/folder"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("/nonexistent/folder is not a folder."), std::string::npos);
    EXPECT_EQ(run({"scan"}).status, 2);
}

TEST_F(Cli, SettingsPrintsSavedSettingsWithSetsApplied) {
    Outcome r = run({"settings", "--set", "paper=letter", "--set", "rangeStart=2025-01-31", "--set",
                     "limitDates=true"});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
    EXPECT_EQ(j["paper"], "letter");
    EXPECT_EQ(j["limitDates"], true);
    EXPECT_DOUBLE_EQ(j["rangeStart"].get<double>(), 759974400.0);
}

TEST_F(Cli, SettingsFileAppliesOverTheDefaultsAndBadKeysFailWithStatusTwo) {
    TempFolder dir;
    std::string good = dir.write("good.json", R"({"title": "Visa 2025", "maxFileMB": 10})");
    Outcome r = run({"settings", "--settings", good});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
    EXPECT_EQ(j["title"], "Visa 2025");
    EXPECT_EQ(j["maxFileMB"], 10);
    EXPECT_EQ(j["messagesPerMonth"], 5);

    std::string bad = dir.write("bad.json", R"({"tilte": "x"})");
    r = run({"settings", "--settings", bad});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("\u201ctilte\u201d"), std::string::npos);

    std::string wrong = dir.write("wrong.json", R"({"maxFileMB": "ten"})");
    r = run({"settings", "--settings", wrong});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("maxFileMB"), std::string::npos);

    r = run({"settings", "--set", "maxFileMB=ten"});
    EXPECT_EQ(r.status, 2);
    r = run({"settings", "--set", "nokey"});
    EXPECT_EQ(r.status, 2);
}

TEST_F(Cli, HelpForTheToolAndEachCommand) {
    Outcome r = run({"--help"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("scan FOLDER"), std::string::npos);
    r = run({"scan", "--help"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("Usage: kinfolio-cli scan FOLDER"), std::string::npos);
    r = run({"frobnicate"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unknown command"), std::string::npos);
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({"scan", "--bogus"}).status, 2);
}

// The real program, once, as a user runs it.
TEST_F(Cli, TheProgramRunsAndPrintsJson) {
    TempFolder dir;
    dir.write("notes.docx", "x");
    std::string command = std::string(KINFOLIO_CLI_BINARY) + " scan '" + dir.path() + "' --json";
    FILE* pipe = ::popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string out;
    char buf[4096];
    while (size_t n = std::fread(buf, 1, sizeof buf, pipe))
        out.append(buf, n);
    EXPECT_EQ(::pclose(pipe), 0);
    EXPECT_EQ(Json::parse(out)["skipped"][0]["reason"], "Not a file type Kinfolio reads.");
}

}  // namespace
}  // namespace kinfolio::cli
