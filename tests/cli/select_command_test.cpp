#include <gtest/gtest.h>

#include <sstream>

#include "cli/commands.h"
#include "scan/scanner.h"
#include "selection/items.h"
#include "support/run_cli.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

using namespace testing;

// A materials folder and a settings file beside it (never inside the materials).
class SelectCommand : public ::testing::Test {
protected:
    ScopedHome home;
    TempFolder temp;
    std::string materials = temp.path() + "/materials";
    std::string settingsFile = temp.write("settings.json", "{}");
};

TEST_F(SelectCommand, AFolderWithNothingReadable) {
    temp.write("materials/notes/shopping.txt", "milk\neggs\n");
    temp.write("materials/readme.xyz", "nothing to see");
    temp.write("settings.json", R"({"messagesPerMonth": 3, "photosPerMonth": 2})");
    Settings settings;
    settings.messagesPerMonth = 3;
    settings.photosPerMonth = 2;
    auto r = runCli({"select", materials, "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "Nothing\n0 items in the export.\n" + Selection::samplingNote(settings) + "\n");

    r = runCli({"select", materials, "--json", "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
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
    EXPECT_EQ(j["samplingNote"], Selection::samplingNote(settings));
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
    temp.write("materials/Sam/_chat.txt", chat);
    std::string sha = Scanner::sha256Hex(chat);
    auto id = [&](int line) { return sha + ":" + std::to_string(line); };

    auto r = runCli({"select", materials, "--json", "--set", "messagesPerMonth=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    Json j = Json::parse(r.out);
    EXPECT_EQ(j["candidates"], 14);
    EXPECT_EQ(j["selected"], Json({id(1), id(2), id(11), id(12), id(13)}));
    EXPECT_EQ(j["summary"], "5 messages");
    EXPECT_EQ(j["exportCount"], 5);
    EXPECT_EQ(j["gapMonths"], Json({"Feb 2025"}));

    temp.write("settings.json", Json{{"messagesPerMonth", 1},
                                     {"excludedItems", {id(2), id(13)}},
                                     {"addedItems", {id(5), id(13)}}}
                                    .dump());
    r = runCli({"select", materials, "--json", "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    j = Json::parse(r.out);
    EXPECT_EQ(j["selected"], Json({id(1), id(5), id(11), id(12)}));
    std::string note = j["samplingNote"];
    EXPECT_TRUE(note.ends_with("The applicant then added 2 and removed 2 item(s) by hand."))
        << note;
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
    temp.write("materials/Telegram/result.json", json);
    std::string sha = Scanner::sha256Hex(json);
    temp.write("settings.json",
               Json{{"messagesPerMonth", 0}, {"excludedSources", {sha + "#1"}}}.dump());
    auto r = runCli({"select", materials, "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.out.starts_with("4 messages\n4 items in the export.\n")) << r.out;
    EXPECT_TRUE(
        r.out.ends_with("\n\n2025-05-04 10:00  Kim  c\n2025-05-04 10:01  Kim  d\n"
                        "2025-05-04 10:02  Jo  e\n2025-05-05 10:00  Jo  f\n"))
        << r.out;
}

// Coverage lines first, then one line per item: date, sender or kind, the
// first 60 characters of its text on one line.
TEST(SelectOutput, TextListsCoverageThenOneLinePerItem) {
    std::string sixty;
    for (int i = 0; i < 30; ++i)
        sixty += "\u00e9\U0001F600";  // two and four bytes: 60 characters, 180 bytes
    std::vector<Evidence> chat = {message("c", 0, at(2025, 1, 5, 9, 30)),
                                  message("c", 1, at(2025, 4, 2, 18, 5), "Alex")};
    chat[0].text = sixty + "TAIL";
    chat[1].text = "line one\nline two\r\nline three";
    Evidence photo = item(ItemKind::photo, "p", 0, at(2025, 1, 6, 10, 0));
    photo.text = "";
    ScanResult scan;
    scan.sources = {source(SourceKind::whatsapp, "chat", chat),
                    source(SourceKind::photos, "pics", {photo})};
    Settings settings;
    std::ostringstream out;
    cli::printSelection(out, scan, settings);
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
        EXPECT_TRUE(text.starts_with("1 message\n1 item in the export.\n")) << text;
        std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
        EXPECT_EQ(last, "2025-01-05 09:30  " + c.row + "\n") << c.name;
    }
}

}  // namespace
}  // namespace kinfolio
