#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "cli/cli.h"
#include "model/json.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

using testing::TempFolder;

// A materials folder with one export of each kind of chat read from text:
// LINE, a chat spreadsheet and a Quillory export folder with its photo.
void writeChats(const TempFolder& dir) {
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
}

TEST(ScanCommandChats, JsonListsEachChatOnceWithItsDetails) {
    TempFolder dir;
    writeChats(dir);
    // Settings from a file of its own, never the user's saved ones.
    TempFolder config;
    std::string settings = config.write("settings.json", R"({"dateOrder": "automatic"})");
    std::ostringstream out, err;
    int status = run({"scan", dir.path(), "--json", "--settings", settings}, out, err);
    ASSERT_EQ(status, 0) << err.str();

    Json result = Json::parse(out.str());
    EXPECT_TRUE(result["skipped"].empty()) << result["skipped"].dump(2);

    std::map<std::string, Json> byKind;
    std::map<std::string, int> listed;
    for (const auto& s : result["sources"]) {
        byKind[s["kind"].get<std::string>()] = s;
        for (const auto& f : s["files"])
            ++listed[f["path"].get<std::string>()];
    }
    ASSERT_EQ(result["sources"].size(), 3u) << out.str();

    const Json& line = byKind.at("line");
    EXPECT_EQ(line["name"], "Sam Lee");
    EXPECT_EQ(line["detail"], "LINE \u00B7 1 message \u00B7 1 call \u00B7 Jun 2025");
    EXPECT_EQ(line["items"][1]["kind"], "call");
    EXPECT_EQ(line["items"][1]["duration"], 2710.0);

    const Json& sheet = byKind.at("chatCSV");
    EXPECT_EQ(sheet["name"], "Texts");
    EXPECT_EQ(sheet["detail"], "2 messages \u00B7 May 2025");
    EXPECT_EQ(sheet["items"][0]["text"], "Hi, you");
    EXPECT_EQ(sheet["items"][0]["dateText"], "2025-05-14 08:00:00");

    const Json& quillory = byKind.at("quillory");
    EXPECT_EQ(quillory["name"], "Sam Lee & Alex Morgan");
    EXPECT_EQ(quillory["detail"], "iMessage \u00B7 2 messages \u00B7 Jun 2025");
    EXPECT_EQ(quillory["items"][0]["dateText"], "2025-06-20 10:00:00");
    EXPECT_EQ(quillory["items"][0]["attachmentName"], "IMG_1.jpg");
    EXPECT_EQ(quillory["items"][0]["attachmentID"], quillory["files"][1]["sha256"]);
    EXPECT_EQ(quillory["files"][1]["path"], "Quillory/attachments/IMG_1.jpg");

    // Every file is listed exactly once; the export's PDF and report not at all.
    EXPECT_EQ(listed, (std::map<std::string, int>{{"LINE/[LINE] Sam Lee.txt", 1},
                                                  {"Texts.csv", 1},
                                                  {"Quillory/messages.csv", 1},
                                                  {"Quillory/attachments/IMG_1.jpg", 1}}));
}

}  // namespace
}  // namespace kinfolio::cli
