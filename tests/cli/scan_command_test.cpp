#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "cli/json_output.h"
#include "example/example_folder.h"
#include "model/json.h"
#include "scan/scanner.h"
#include "support/run_cli.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

using testing::runCli;

// A materials folder with one export of each kind of chat read from text
// (LINE, a chat spreadsheet, a Quillory export folder with its photo), a
// whole-account Telegram export and a Messenger chat in two files, both with
// a photo, and two files Kinfolio does not read.
class ScanCommand : public ::testing::Test {
protected:
    void SetUp() override {
        dir.write("LINE/[LINE] Sam Lee.txt",
                  "[LINE] Chat history with Sam Lee\nSaved on: 2025/07/01 10:00\n\n"
                  "Sat, 2025/06/14\n09:15\tSam Lee\tGood morning!\n"
                  "21:00\tAlex Morgan\t\u260E Call time 0:45:10\n");
        dir.write("Texts.csv",
                  "Date,Sender,Text\n14/05/2025 08:00,Sam Lee,\"Hi, you\"\n15/05/2025 08:00,Alex "
                  "Morgan,Hello\n");
        dir.write("Quillory/messages.csv",
                  "date_local,direction,sender,text,attachments\n"
                  "2025-06-20 10:00:00 +0200,incoming,Sam Lee,Our flat,IMG_1.jpg; IMG_2.jpg\n"
                  "2025-06-20 10:05:00 +0200,outgoing,Alex Morgan,Love it,\n");
        dir.write("Quillory/verification.txt", "Quillory verification report\nSHA-256 ...\n");
        dir.write("Quillory/Sam Lee.pdf", "%PDF-1.4 printed conversation");
        dir.write("Quillory/attachments/IMG_1.jpg", "\xFF\xD8\xFF\xE0 photo bytes");
        dir.write("Telegram/result.json", telegram);
        dir.write("Telegram/chats/chat_001/photos/photo_1.jpg", "telegram jpeg");
        dir.write(inbox + "message_1.json",
                  R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex"}], "messages": [
  {"sender_name": "Sam Lee", "timestamp_ms": 1749049200000, "photos": [{"uri": ")" +
                      inbox.substr(9) + R"(photos/1.jpg"}]}]})");
        dir.write(inbox + "message_2.json",
                  R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex"}], "messages": [
  {"sender_name": "Alex", "timestamp_ms": 1749049100000, "content": "Hi"}]})");
        dir.write(inbox + "photos/1.jpg", "messenger jpeg");
        dir.write("notes.docx", "x");
        dir.write("sub/page.html", "<html></html>");
    }

    testing::ScopedHome home;
    testing::TempFolder dir;
    const std::string telegram = R"({"about": "x", "chats": {"list": [
  {"name": "Sam Lee", "type": "personal_chat", "messages": [
    {"type": "message", "date": "2025-05-03T20:07:00", "from": "Sam Lee", "text": "",
     "photo": "chats/chat_001/photos/photo_1.jpg"}]},
  {"name": "Family", "type": "private_group", "messages": [
    {"type": "message", "date": "2025-05-04T10:00:00", "from": "Kim", "text": "Hello"}]}
]}})";
    const std::string inbox = "Facebook/your_facebook_activity/messages/inbox/sam_1/";
};

TEST_F(ScanCommand, JsonListsEachChatOnceWithItsDetails) {
    auto r = runCli({"scan", dir.path(), "--json", "--set", "timeZoneID=Europe/London"});
    ASSERT_EQ(r.status, 0) << r.err;
    Json scan = Json::parse(r.out);
    EXPECT_EQ(scan["folder"], dir.path());
    EXPECT_EQ(scan["skipped"], Json::parse(R"([
        {"path": "notes.docx", "reason": "Not a file type Kinfolio reads."},
        {"path": "sub/page.html", "reason": "Web page; Kinfolio does not read HTML."}])"));
    std::map<std::string, Json> by;  // kind/name
    std::map<std::string, int> listed;
    for (const auto& s : scan["sources"]) {
        by[s["kind"].get<std::string>() + "/" + s["name"].get<std::string>()] = s;
        for (const auto& f : s["files"])
            ++listed[f["path"].get<std::string>()];
    }
    ASSERT_EQ(by.size(), 6u) << r.out;

    const Json& line = by.at("line/Sam Lee");
    EXPECT_EQ(line["detail"], "LINE \u00B7 1 message \u00B7 1 call \u00B7 Jun 2025");
    EXPECT_EQ(line["items"][1]["kind"], "call");
    EXPECT_EQ(line["items"][1]["duration"], 2710.0);

    const Json& sheet = by.at("chatCSV/Texts");
    EXPECT_EQ(sheet["detail"], "2 messages \u00B7 May 2025");
    EXPECT_EQ(sheet["items"][0]["text"], "Hi, you");
    EXPECT_EQ(sheet["items"][0]["dateText"], "2025-05-14 08:00:00");

    const Json& quillory = by.at("quillory/Sam Lee & Alex Morgan");
    EXPECT_EQ(quillory["detail"], "iMessage \u00B7 2 messages \u00B7 Jun 2025");
    EXPECT_EQ(quillory["items"][0]["dateText"], "2025-06-20 10:00:00");
    EXPECT_EQ(quillory["items"][0]["attachmentName"], "IMG_1.jpg");
    EXPECT_EQ(quillory["items"][0]["attachmentID"], quillory["files"][1]["sha256"]);

    // Every chat of a Telegram export is a source of its own, with its own ids.
    std::string sha = Scanner::sha256Hex(telegram);
    const Json &family = by.at("telegram/Family"), &sam = by.at("telegram/Sam Lee");
    EXPECT_EQ(family["id"], sha + "#2");
    EXPECT_EQ(family["items"][0]["id"], sha + ":2");
    EXPECT_EQ(sam["id"], sha + "#1");
    EXPECT_EQ(sam["items"][0]["id"], sha + ":1");
    EXPECT_EQ(sam["files"][1]["path"], "Telegram/chats/chat_001/photos/photo_1.jpg");
    EXPECT_EQ(sam["items"][0]["attachmentID"], Scanner::sha256Hex("telegram jpeg"));

    const Json& messenger = by.at("messenger/Sam Lee & Alex");
    EXPECT_EQ(messenger["notes"][0],
              "Times converted from UTC to Europe/London. Change Time zone if that is wrong.");
    EXPECT_EQ(messenger["files"][2]["path"], inbox + "photos/1.jpg");
    ASSERT_EQ(messenger["items"].size(), 2u);
    EXPECT_EQ(messenger["items"][1]["dateText"], "2025-06-04 16:00:00");
    EXPECT_EQ(messenger["items"][1]["attachmentID"], Scanner::sha256Hex("messenger jpeg"));

    // Every file is listed once (the Telegram export once per chat); the
    // Quillory export's PDF and report not at all.
    EXPECT_EQ(listed, (std::map<std::string, int>{{"LINE/[LINE] Sam Lee.txt", 1},
                                                  {"Texts.csv", 1},
                                                  {"Quillory/messages.csv", 1},
                                                  {"Quillory/attachments/IMG_1.jpg", 1},
                                                  {"Telegram/result.json", 2},
                                                  {"Telegram/chats/chat_001/photos/photo_1.jpg", 1},
                                                  {inbox + "message_1.json", 1},
                                                  {inbox + "message_2.json", 1},
                                                  {inbox + "photos/1.jpg", 1}}));
}

TEST_F(ScanCommand, TextNamesEachSourceAndSkippedFileAndProgressGoesOnlyToATerminal) {
    auto shown = runCli({"scan", dir.path()}, /*showProgress=*/true);
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_TRUE(shown.out.starts_with("Materials folder: " + dir.path() + "\n\n"));
    EXPECT_NE(shown.out.find("\n  Sam Lee & Alex\n    "), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("    Note: Times converted from UTC to "), std::string::npos);
    EXPECT_TRUE(
        shown.out.ends_with("\nSkipped files\n  notes.docx\n    Not a file type Kinfolio "
                            "reads.\n  sub/page.html\n    Web page; Kinfolio does not "
                            "read HTML.\n"))
        << shown.out;
    EXPECT_TRUE(shown.err.ends_with("Reading files: 13 of 13\n")) << shown.err;
    auto quiet = runCli({"scan", dir.path()});
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(quiet.out, shown.out);

    testing::TempFolder empty;
    EXPECT_NE(runCli({"scan", empty.path()}).out.find("\n\nNothing Kinfolio can read here."),
              std::string::npos);
}

}  // namespace
}  // namespace kinfolio::cli
