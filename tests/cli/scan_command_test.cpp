#include <gtest/gtest.h>

#include "support/run_cli.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

using testing::runCli;

// A materials folder with one export of each kind of chat read from text
// (LINE, a chat spreadsheet, a Quillory export folder with its photo), a
// whole-account Telegram export and a Messenger chat in two files, both with
// a photo, and two files Kinfolio does not read.
TEST(ScanCommand, TextNamesEachSourceAndSkippedFileAndProgressGoesOnlyToATerminal) {
    testing::ScopedHome home;
    testing::TempFolder dir;
    const std::string inbox = "Facebook/your_facebook_activity/messages/inbox/sam_1/";
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
    dir.write("Telegram/result.json", R"({"about": "x", "chats": {"list": [
  {"name": "Sam Lee", "type": "personal_chat", "messages": [
    {"type": "message", "date": "2025-05-03T20:07:00", "from": "Sam Lee", "text": "",
     "photo": "chats/chat_001/photos/photo_1.jpg"}]},
  {"name": "Family", "type": "private_group", "messages": [
    {"type": "message", "date": "2025-05-04T10:00:00", "from": "Kim", "text": "Hello"}]}
]}})");
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
