#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli.h"
#include "model/json.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

class EmailScan : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(folder / "Mail");
        write(root / "settings.json", "{}");
    }

    static void write(const fs::path& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }

    Json scan() {
        std::ostringstream out, err;
        std::string before = testing::folderFingerprint(folder);
        int status = cli::run(
            {"scan", folder.string(), "--json", "--settings", (root / "settings.json").string()},
            out, err);
        EXPECT_EQ(status, 0) << err.str();
        EXPECT_EQ(testing::folderFingerprint(folder), before);
        return Json::parse(out.str());
    }

    testing::TempFolder temp;
    fs::path root = temp.path();
    fs::path folder = root / "materials";
};

TEST_F(EmailScan, LooseEmailsFormOneSourceAndUndatedFilesAreSkipped) {
    write(folder / "Mail" / "note.eml",
          "From: Sam <sam@example.com>\r\nTo: Alex <alex@example.com>\r\n"
          "Subject: =?UTF-8?B?VGlja2V0cw==?=\r\nDate: Tue, 7 Jan 2025 08:15:00 +0100\r\n\r\n"
          "Booked the flights.\r\n");
    write(folder / "Mail" / "box.mbox",
          "From sam@example.com Mon Jan  6 09:00:00 2025\n"
          "From: Sam\nTo: Alex\nSubject: First\nDate: Mon, 6 Jan 2025 09:00:00 +0000\n\n"
          "Hello\n>From the airport\n"
          "From alex@example.com Mon Jan  6 10:00:00 2025\n"
          "From: Alex\nSubject: No date here\n\nignored\n"
          "From alex@example.com Mon Jan 20 21:00:00 2025\n"
          "From: Alex\nSubject: Third\nDate: 20 Jan 2025 21:00\n\nGood night\n");
    write(folder / "saved.txt",
          "From: Alex\nDate: 15 Jan 2025 12:00:00\nSubject: Saved as text\n\nLunch?\n");
    write(folder / "undated.eml", "From: Sam\nDate: 2025-01-06\nSubject: Old\n\nbody\n");

    Json result = scan();
    ASSERT_EQ(result["sources"].size(), 1u) << result.dump(2);
    const Json& emails = result["sources"][0];
    EXPECT_EQ(emails["id"], "emails");
    EXPECT_EQ(emails["kind"], "emails");
    EXPECT_EQ(emails["name"], "Emails");
    EXPECT_EQ(emails["detail"], "4 emails \u00b7 Jan 2025");

    std::vector<std::string> files;
    for (const auto& f : emails["files"])
        files.push_back(f["path"]);
    EXPECT_EQ(files, (std::vector<std::string>{"Mail/box.mbox", "Mail/note.eml", "saved.txt"}));

    const Json& items = emails["items"];
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0]["dateText"], "2025-01-06 09:00:00");
    EXPECT_EQ(items[0]["kind"], "email");
    EXPECT_EQ(items[0]["heading"], "From: Sam\nTo: Alex\nSubject: First");
    EXPECT_EQ(items[0]["text"], "Hello\nFrom the airport");
    EXPECT_EQ(items[0]["position"], 1);
    EXPECT_EQ(items[0]["fileID"], emails["files"][0]["sha256"]);

    EXPECT_EQ(items[1]["dateText"], "2025-01-07 08:15:00");
    EXPECT_EQ(items[1]["heading"],
              "From: Sam <sam@example.com>\nTo: Alex <alex@example.com>\nSubject: Tickets");
    EXPECT_EQ(items[1]["text"], "Booked the flights.");
    EXPECT_EQ(items[1]["sender"], "Sam <sam@example.com>");

    EXPECT_EQ(items[2]["heading"], "From: Alex\nSubject: Saved as text");
    EXPECT_EQ(items[2]["text"], "Lunch?");

    EXPECT_EQ(items[3]["dateText"], "2025-01-20 21:00:00");
    EXPECT_EQ(items[3]["heading"], "From: Alex\nSubject: Third");
    EXPECT_EQ(items[3]["position"], 3);  // the undated second message keeps its place

    ASSERT_EQ(result["skipped"].size(), 1u);
    EXPECT_EQ(result["skipped"][0]["path"], "undated.eml");
    EXPECT_EQ(result["skipped"][0]["reason"], "No dated email found.");
}

TEST_F(EmailScan, Utf16MessageIsDecodedFirst) {
    std::string text = "From: Sam\nDate: 6 Jan 2025 09:05\nSubject: Hi\n\nUTF-16 body\n";
    std::string utf16 = "\xFF\xFE";
    for (char c : text)
        utf16 += std::string{c, '\0'};
    write(folder / "wide.eml", utf16);
    Json result = scan();
    ASSERT_EQ(result["sources"].size(), 1u) << result.dump(2);
    ASSERT_EQ(result["sources"][0]["items"].size(), 1u);
    EXPECT_EQ(result["sources"][0]["items"][0]["text"], "UTF-16 body");
    EXPECT_EQ(result["sources"][0]["detail"], "1 email \u00b7 Jan 2025");
}

// One old message in raw ISO Latin-1 costs nothing: each message of a
// mailbox is decoded on its own, by its declared charset, and 8-bit header
// values as Latin-1.
TEST_F(EmailScan, ALatin1MessageInAMailboxIsReadWithTheOthers) {
    write(folder / "Mail" / "archive.mbox",
          "From sam@example.com Mon Jan  6 09:00:00 2025\n"
          "From: Sam\nSubject: New\nDate: Mon, 6 Jan 2025 09:00:00 +0000\n"
          "Content-Type: text/plain; charset=utf-8\n\nCaf\xC3\xA9 at nine\n"
          "From zoe@example.com Sat Mar  1 10:00:00 2003\n"
          "From: Zo\xEB\nSubject: Cr\xE8me br\xFBl\xE9"
          "e\nDate: Sat, 1 Mar 2003 10:00:00 +0100\n"
          "Content-Type: text/plain; charset=ISO-8859-1\n\nCaf\xE9 \xE0 neuf heures\n");
    Json result = scan();
    ASSERT_EQ(result["sources"].size(), 1u) << result.dump(2);
    EXPECT_TRUE(result["skipped"].empty()) << result.dump(2);
    const Json& items = result["sources"][0]["items"];
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0]["text"], "Caf\u00E9 \u00E0 neuf heures");
    EXPECT_EQ(items[0]["heading"], "From: Zo\u00EB\nSubject: Cr\u00E8me br\u00FBl\u00E9e");
    EXPECT_EQ(items[1]["text"], "Caf\u00E9 at nine");
}

TEST_F(EmailScan, EmailTextInATxtIsSkippedWhenUndated) {
    write(folder / "letter.txt", "From: Sam\nDate: someday\nSubject: Hi\n\nbody\n");
    Json result = scan();
    EXPECT_TRUE(result["sources"].empty());
    ASSERT_EQ(result["skipped"].size(), 1u);
    EXPECT_EQ(result["skipped"][0]["reason"], "No dated email found.");
}

TEST_F(EmailScan, AByteOrderMarkDoesNotHideAnEmailInATxt) {
    write(folder / "letter.txt",
          "\xEF\xBB\xBF"
          "From: Sam\nDate: 6 Jan 2025 09:05\nSubject: Hi\n\nbody\n");
    Json result = scan();
    ASSERT_EQ(result["sources"].size(), 1u) << result.dump(2);
    EXPECT_EQ(result["sources"][0]["items"][0]["heading"], "From: Sam\nSubject: Hi");
}

}  // namespace
}  // namespace kinfolio
