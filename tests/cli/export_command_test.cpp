#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/cli.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempFolder;

struct Outcome {
    int status;
    std::string out, err;
};

class ExportCommand : public ::testing::Test {
protected:
    void SetUp() override {
        ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
        ::setenv("XDG_CACHE_HOME", config.path().c_str(), 1);
        // A month of chat, 12 messages, one of them saying the partner's name.
        std::string chat;
        for (int day = 1; day <= 12; ++day)
            chat += "[" + std::to_string(day) + "/01/2025, 09:00:00] " +
                    (day % 2 ? "Sam Lee" : "Alex Morgan") + ": Message number " +
                    std::to_string(day) + (day == 6 ? ", see you soon Sam" : "") + "\n";
        materials.write("Sam/_chat.txt", chat);
    }
    void TearDown() override {
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_CACHE_HOME");
    }

    Outcome run(std::vector<std::string> args, bool showProgress = false) {
        std::ostringstream out, err;
        int status = cli::run(args, out, err, showProgress);
        return {status, out.str(), err.str()};
    }

    TempFolder config, materials, output;
};

TEST_F(ExportCommand, WritesTheProposedFileIntoTheGivenFolder) {
    Outcome r = run({"export", materials.path(), "-o", output.path(), "--set", "title=Visa/2025",
                     "--set", "applicant=Sam Lee", "--set", "messagesPerMonth=0"});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string file = output.path() + "/Visa-2025 - Sam Lee.pdf";
    EXPECT_NE(r.out.find("Wrote " + file), std::string::npos) << r.out;
    auto pdf = testing::readPDF(readFile(file));
    EXPECT_NE(r.out.find(std::to_string(pdf.pages.size()) + " pages."), std::string::npos);
    EXPECT_NE(pdf.allFlat().find("Message number 12"), std::string::npos);
    EXPECT_NE(pdf.flat(0).find("Page 1 of " + std::to_string(pdf.pages.size())), std::string::npos);
    // The appendix lists the chat file's fingerprint.
    std::string sha = Scanner::sha256Hex(readFile(materials.path() + "/Sam/_chat.txt"));
    EXPECT_NE(pdf.allFlat().find(sha), std::string::npos);
}

TEST_F(ExportCommand, ReportsFilesAndPagesOnlyToATerminal) {
    std::string shown = output.path() + "/shown.pdf", quiet = output.path() + "/quiet.pdf";
    Outcome r = run({"export", materials.path(), "-o", shown, "--set", "messagesPerMonth=0"},
                    /*showProgress=*/true);
    ASSERT_EQ(r.status, 0) << r.err;
    std::string pages = std::to_string(testing::readPDF(readFile(shown)).pages.size());
    EXPECT_NE(r.err.find("Reading files: 1 of 1\n"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Drawing pages: " + pages + " of " + pages + "\n"), std::string::npos)
        << r.err;

    Outcome q = run({"export", materials.path(), "-o", quiet, "--set", "messagesPerMonth=0"});
    ASSERT_EQ(q.status, 0) << q.err;
    EXPECT_EQ(q.err, "");
    EXPECT_EQ(readFile(quiet), readFile(shown));
}

TEST_F(ExportCommand, HiddenWordsNeverReachThePdf) {
    std::string file = output.path() + "/evidence.pdf";
    Outcome r = run({"export", materials.path(), "-o", file, "--set", "hiddenText=sam", "--set",
                     "messagesPerMonth=0"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto pdf = testing::readPDF(readFile(file));
    std::string text = pdf.allFlat();
    for (auto& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(text.find("sam"), std::string::npos);
    EXPECT_NE(text.find("[redacted]"), std::string::npos);
}

TEST_F(ExportCommand, NothingSelectedWritesNothingAndFails) {
    Outcome r = run({"export", materials.path(), "-o", output.path(), "--set", "limitDates=true",
                     "--set", "rangeStart=2030-01-01", "--set", "rangeEnd=2030-01-02"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("Nothing is selected."), std::string::npos);
    EXPECT_TRUE(fs::is_empty(output.path()));
}

TEST_F(ExportCommand, NeverWritesIntoTheMaterialsFolderUnlessTold) {
    std::string before = testing::folderFingerprint(materials.path());
    fs::path cwd = fs::current_path();
    fs::current_path(materials.path());
    Outcome r = run({"export", materials.path()});
    fs::current_path(cwd);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(testing::folderFingerprint(materials.path()), before);
}

// The current folder can vanish under a terminal (removed from the file
// manager); the command must end with a message, not an abort.
TEST_F(ExportCommand, AVanishedCurrentFolderIsAnErrorMessage) {
    fs::path cwd = fs::current_path();
    testing::TempFolder gone;
    fs::current_path(gone.path());
    fs::remove(gone.path());
    Outcome r = run({"export", materials.path()});
    fs::current_path(cwd);
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("kinfolio-cli: Could not finish: "), std::string::npos) << r.err;
    EXPECT_EQ(r.err.back(), '\n');
    EXPECT_TRUE(fs::is_empty(output.path()));
}

}  // namespace
}  // namespace kinfolio::cli
