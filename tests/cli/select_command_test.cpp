#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli.h"
#include "cli/commands.h"
#include "scan/scanner.h"
#include "selection/items.h"
#include "selection/selection.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using namespace testing;

// A materials folder of files the scan reads as nothing, and a settings file
// beside it (never inside the materials).
class SelectCommand : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(materials / "notes");
        write(materials / "notes" / "shopping.txt", "milk\neggs\n");
        write(materials / "readme.xyz", "nothing to see");
        write(settingsFile, R"({"messagesPerMonth": 3, "photosPerMonth": 2})");
    }

    static void write(const fs::path& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }

    int run(std::vector<std::string> args) {
        out.str("");
        err.str("");
        return cli::run(args, out, err);
    }

    TempFolder temp;
    fs::path root = temp.path();
    fs::path materials = root / "materials";
    fs::path settingsFile = root / "settings.json";
    std::ostringstream out, err;
};

TEST_F(SelectCommand, JsonOfAFolderWithNothingReadable) {
    ASSERT_EQ(run({"select", materials.string(), "--json", "--settings", settingsFile.string()}), 0)
        << err.str();
    Json j = Json::parse(out.str());
    std::vector<std::string> keys;
    for (const auto& [key, value] : j.items())
        keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"candidates", "selected", "summary", "exportCount",
                                              "gapMonths", "samplingNote"}));
    EXPECT_EQ(j["candidates"], 0);
    EXPECT_EQ(j["selected"], Json::array());
    EXPECT_EQ(j["summary"], "Nothing");
    EXPECT_EQ(j["exportCount"], 0);
    EXPECT_EQ(j["gapMonths"], Json::array());
    Settings settings;
    settings.messagesPerMonth = 3;
    settings.photosPerMonth = 2;
    EXPECT_EQ(j["samplingNote"], Selection::samplingNote(settings));
}

TEST_F(SelectCommand, SetChangesTheSamplingNote) {
    ASSERT_EQ(run({"select", materials.string(), "--json", "--settings", settingsFile.string(),
                   "--set", "messagesPerMonth=0"}),
              0)
        << err.str();
    EXPECT_NE(Json::parse(out.str())["samplingNote"].get<std::string>().find(
                  "All messages and calls in the chosen period are included."),
              std::string::npos);
}

TEST_F(SelectCommand, TextOfAFolderWithNothingReadable) {
    ASSERT_EQ(run({"select", materials.string(), "--settings", settingsFile.string()}), 0);
    Settings settings;
    settings.messagesPerMonth = 3;
    settings.photosPerMonth = 2;
    EXPECT_EQ(out.str(),
              "Nothing\n0 items in the export.\n" + Selection::samplingNote(settings) + "\n");
}

TEST_F(SelectCommand, RefusesAMissingFolder) {
    EXPECT_EQ(run({"select", (root / "absent").string(), "--settings", settingsFile.string()}), 2);
    EXPECT_NE(err.str().find("is not a folder."), std::string::npos);
    EXPECT_EQ(run({"select", "--settings", settingsFile.string()}), 2);
    EXPECT_TRUE(out.str().empty());
}

TEST_F(SelectCommand, IsListedInTheHelp) {
    ASSERT_EQ(run({"--help"}), 0);
    EXPECT_NE(out.str().find("select FOLDER [--json]"), std::string::npos);
}

ScanResult chatAndPhotos() {
    std::string longText;
    for (int i = 0; i < 30; ++i)
        longText += "\u00e9\U0001F600";  // two and four bytes: 60 characters, 180 bytes
    longText += "TAIL";
    std::vector<Evidence> chat = {message("c", 0, at(2025, 1, 5, 9, 30)),
                                  message("c", 1, at(2025, 4, 2, 18, 5), "Alex")};
    chat[0].text = longText;
    chat[1].text = "line one\nline two\r\nline three";
    Evidence photo = item(ItemKind::photo, "p", 0, at(2025, 1, 6, 10, 0));
    photo.text = "";
    ScanResult scan;
    scan.sources = {source(SourceKind::whatsapp, "chat", chat),
                    source(SourceKind::photos, "pics", {photo})};
    return scan;
}

// The whole road on a real WhatsApp chat: ten January messages and a system
// line, nothing in February, three in March; one message a month with its
// neighbours, then the user's ticks on top.
TEST_F(SelectCommand, SamplesAWhatsAppChatEndToEnd) {
    std::string chat =
        "[01/01/2025, 09:00:00] Sam Lee: m1\n"
        "[02/01/2025, 09:00:00] Alex Morgan: m2\n"
        "[03/01/2025, 09:00:00] Messages are end-to-end encrypted.\n";
    for (int day = 4; day <= 11; ++day)
        chat += "[" + std::to_string(day) + "/01/2025, 09:00:00] Sam Lee: m" + std::to_string(day) +
                "\n";
    chat +=
        "[14/03/2025, 09:00:00] Alex Morgan: m12\n"
        "[15/03/2025, 09:00:00] Sam Lee: m13\n"
        "[16/03/2025, 09:00:00] Alex Morgan: m14\n";
    fs::create_directories(materials / "Sam");
    write(materials / "Sam" / "_chat.txt", chat);
    std::string sha = Scanner::sha256Hex(chat);
    auto id = [&](int line) { return sha + ":" + std::to_string(line); };

    ASSERT_EQ(run({"select", materials.string(), "--json", "--set", "messagesPerMonth=1"}), 0)
        << err.str();
    Json j = Json::parse(out.str());
    EXPECT_EQ(j["candidates"], 14);
    EXPECT_EQ(j["selected"], Json({id(1), id(2), id(11), id(12), id(13)}));
    EXPECT_EQ(j["summary"], "5 messages");
    EXPECT_EQ(j["exportCount"], 5);
    EXPECT_EQ(j["gapMonths"], Json({"Feb 2025"}));

    write(settingsFile, Json{{"messagesPerMonth", 1},
                             {"excludedItems", {id(2), id(13)}},
                             {"addedItems", {id(5), id(13)}}}
                            .dump());
    ASSERT_EQ(run({"select", materials.string(), "--json", "--settings", settingsFile.string()}), 0)
        << err.str();
    j = Json::parse(out.str());
    EXPECT_EQ(j["selected"], Json({id(1), id(5), id(11), id(12)}));
    EXPECT_EQ(j["samplingNote"].get<std::string>().substr(
                  j["samplingNote"].get<std::string>().find("The applicant")),
              "The applicant then added 2 and removed 2 item(s) by hand.");
}

// Every chat of a whole-account Telegram export is a source of its own, so
// unticking one leaves the others in.
TEST_F(SelectCommand, UntickingOneTelegramChatLeavesTheOthers) {
    std::string json = R"({"chats": {"list": [
  {"name": "Sam", "type": "personal_chat", "messages": [
    {"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text": "a"},
    {"type": "message", "date": "2025-05-03T20:01:00", "from": "Sam", "text": "b"}]},
  {"name": "Family", "type": "private_group", "messages": [
    {"type": "message", "date": "2025-05-04T10:00:00", "from": "Kim", "text": "c"},
    {"type": "message", "date": "2025-05-04T10:01:00", "from": "Kim", "text": "d"},
    {"type": "message", "date": "2025-05-04T10:02:00", "from": "Jo", "text": "e"}]},
  {"name": "Trip", "type": "private_group", "messages": [
    {"type": "message", "date": "2025-05-05T10:00:00", "from": "Jo", "text": "f"}]}
]}})";
    fs::create_directories(materials / "Telegram");
    write(materials / "Telegram" / "result.json", json);
    std::string sha = Scanner::sha256Hex(json);

    ASSERT_EQ(run({"select", materials.string(), "--json", "--set", "messagesPerMonth=0"}), 0);
    EXPECT_EQ(Json::parse(out.str())["candidates"], 6);
    write(settingsFile, Json{{"messagesPerMonth", 0}, {"excludedSources", {sha + "#1"}}}.dump());
    ASSERT_EQ(run({"select", materials.string(), "--settings", settingsFile.string()}), 0);
    std::string text = out.str();
    EXPECT_NE(text.find("4 messages"), std::string::npos) << text;
    EXPECT_NE(text.find("Kim"), std::string::npos);
    EXPECT_NE(text.find("Jo"), std::string::npos);
    EXPECT_EQ(text.find("Sam "), std::string::npos);
}

TEST(SelectOutput, TextListsCoverageThenOneLinePerItem) {
    std::ostringstream out;
    Settings settings;
    cli::printSelection(out, chatAndPhotos(), settings);
    std::string sixty;
    for (int i = 0; i < 30; ++i)
        sixty += "\u00e9\U0001F600";
    EXPECT_EQ(out.str(),
              "2 messages, 1 photo\n"
              "3 items in the export.\n"
              "Nothing selected for Feb 2025, Mar 2025. Add material for those months if you have "
              "it.\n" +
                  Selection::samplingNote(settings) +
                  "\n\n"
                  "2025-01-05 09:30  Sam  " +
                  sixty +
                  "\n"
                  "2025-01-06 10:00  (photo)\n"
                  "2025-04-02 18:05  Alex  line one line two line three\n");
}

// Each row shows the item as the document prints it: hidden words replaced in
// the sender and in the text, before the text is shortened.
TEST(SelectOutput, RowsShowHiddenWordsReplaced) {
    struct Case {
        const char* name;
        std::string hidden, sender, text, row;
    };
    const std::string fiftyEight(58, 'x');
    const Case cases[] = {
        {"sender and text", "sam", "Sam", "Samuel says hi", "[REDACTED]  [REDACTED]uel says hi"},
        {"phrase across a joined line break", "two three", "Alex", "one two\nthree",
         "Alex  one [REDACTED]"},
        {"decomposed name", "Zo\u00eb", "Zoe\u0308", "hi Zoe\u0308", "[REDACTED]  hi [REDACTED]"},
        {"name at the cut", "samantha", "Alex", fiftyEight + "Samantha",
         "Alex  " + fiftyEight + "[R"},
    };
    for (const auto& c : cases) {
        Evidence item = message("c", 0, at(2025, 1, 5, 9, 30), c.sender);
        item.text = c.text;
        ScanResult scan;
        scan.sources = {source(SourceKind::whatsapp, "chat", {item})};
        Settings settings;
        settings.hiddenText = c.hidden;
        std::ostringstream out;
        cli::printSelection(out, scan, settings);
        std::string text = out.str();
        std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
        EXPECT_EQ(last, "2025-01-05 09:30  " + c.row + "\n") << c.name;
    }
}

TEST(SelectOutput, JsonListsIdsInDocumentOrder) {
    Settings settings;
    settings.excludedItems = {"p:0"};
    Json j = cli::selectionJson(chatAndPhotos(), settings);
    EXPECT_EQ(j["candidates"], 3);
    EXPECT_EQ(j["selected"], Json::array({"c:0", "c:1"}));
    EXPECT_EQ(j["summary"], "2 messages");
    EXPECT_EQ(j["exportCount"], 2);
    EXPECT_EQ(j["gapMonths"], Json::array({"Feb 2025", "Mar 2025"}));
}

}  // namespace
}  // namespace kinfolio
