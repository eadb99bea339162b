#include <gtest/gtest.h>
#include <stdlib.h>
#include <filesystem>
#include <sstream>

#include "cli/cli.h"
#include "cli/json_output.h"
#include "example/example_folder.h"
#include "model/json.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

TEST(ScanCommand, ReportsProgressOnlyToATerminal) {
    testing::TempFolder temp;
    fs::path folder = fs::path(temp.path()) / "materials";
    ExampleFolder::write(folder.string());
    size_t total = ExampleFolder::files().size();

    std::ostringstream out, err;
    EXPECT_EQ(cli::run({"scan", folder.string()}, out, err, /*showProgress=*/true), 0);
    EXPECT_NE(err.str().find("Reading files: " + std::to_string(total) + " of " +
                             std::to_string(total) + "\n"),
              std::string::npos)
        << err.str();

    std::ostringstream quietOut, quietErr;
    EXPECT_EQ(cli::run({"scan", folder.string()}, quietOut, quietErr, false), 0);
    EXPECT_EQ(quietErr.str(), "");
    EXPECT_EQ(quietOut.str(), out.str());
}

}  // namespace
}  // namespace kinfolio

namespace kinfolio::cli {
namespace {

using testing::TempFolder;

TEST(ScanCommand, JsonListsChatExportsWithPhotosAndTheTimeZoneNote) {
    TempFolder config;
    ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
    TempFolder folder;
    std::string telegram = R"({"about": "x", "chats": {"list": [
  {"name": "Sam Lee", "type": "personal_chat", "messages": [
    {"type": "message", "date": "2025-05-03T20:07:00", "from": "Sam Lee", "text": "",
     "photo": "chats/chat_001/photos/photo_1.jpg"}]},
  {"name": "Family", "type": "private_group", "messages": [
    {"type": "message", "date": "2025-05-04T10:00:00", "from": "Kim", "text": "Hello"}]}
]}})";
    folder.write("Telegram/result.json", telegram);
    folder.write("Telegram/chats/chat_001/photos/photo_1.jpg", "telegram jpeg");
    const std::string inbox = "your_facebook_activity/messages/inbox/sam_1/";
    folder.write("Facebook/" + inbox + "message_1.json",
                 R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex"}], "messages": [
  {"sender_name": "Sam Lee", "timestamp_ms": 1749049200000, "photos": [{"uri": ")" +
                     inbox + R"(photos/1.jpg"}]}]})");
    folder.write("Facebook/" + inbox + "message_2.json",
                 R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex"}], "messages": [
  {"sender_name": "Alex", "timestamp_ms": 1749049100000, "content": "Hi"}]})");
    folder.write("Facebook/" + inbox + "photos/1.jpg", "messenger jpeg");

    std::ostringstream out, err;
    int status =
        run({"scan", folder.path(), "--json", "--set", "timeZoneID=Europe/London"}, out, err);
    ASSERT_EQ(status, 0) << err.str();
    Json scan = Json::parse(out.str());
    const Json& sources = scan["sources"];
    ASSERT_EQ(sources.size(), 3u) << out.str();
    for (const Json& skipped : scan["skipped"])
        EXPECT_EQ(skipped["path"].get<std::string>().find(".json"), std::string::npos)
            << skipped.dump();

    std::string sha = Scanner::sha256Hex(telegram);
    // Sorted by name: Family, Sam Lee (Telegram), Sam Lee & Alex (Messenger).
    EXPECT_EQ(sources[0]["name"], "Family");
    EXPECT_EQ(sources[0]["id"], sha + "#2");
    EXPECT_EQ(sources[1]["name"], "Sam Lee");
    EXPECT_EQ(sources[1]["id"], sha + "#1");
    EXPECT_NE(sources[0]["id"], sources[1]["id"]);
    EXPECT_EQ(sources[1]["files"].size(), 2u);
    EXPECT_EQ(sources[1]["files"][1]["path"], "Telegram/chats/chat_001/photos/photo_1.jpg");
    EXPECT_EQ(sources[1]["items"][0]["attachmentID"], Scanner::sha256Hex("telegram jpeg"));
    EXPECT_EQ(sources[1]["items"][0]["id"], sha + ":1");
    EXPECT_EQ(sources[0]["items"][0]["id"], sha + ":2");

    const Json& messenger = sources[2];
    EXPECT_EQ(messenger["kind"], "messenger");
    EXPECT_EQ(messenger["name"], "Sam Lee & Alex");
    EXPECT_EQ(messenger["notes"][0],
              "Times converted from UTC to Europe/London. Change Time zone if that is wrong.");
    ASSERT_EQ(messenger["files"].size(), 3u);
    EXPECT_EQ(messenger["files"][2]["path"], "Facebook/" + inbox + "photos/1.jpg");
    ASSERT_EQ(messenger["items"].size(), 2u);
    EXPECT_EQ(messenger["items"][1]["dateText"], "2025-06-04 16:00:00");
    EXPECT_EQ(messenger["items"][1]["attachmentID"], Scanner::sha256Hex("messenger jpeg"));
    ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace kinfolio::cli

namespace kinfolio::cli {
namespace {

// The streamed JSON of a scan is byte for byte what the JSON tree prints.
TEST(ScanJson, StreamedOutputEqualsTheTree) {
    testing::TempFolder temp;
    std::string folder = temp.path() + "/materials";
    ExampleFolder::write(folder);
    ScanResult scan = Scanner::scan(folder, DateOrder::automatic, "Europe/London");
    scan.skipped.push_back({"notes.docx", "Not a file type Kinfolio reads."});
    scan.sources.push_back(Source{});  // a source without items or files
    std::ostringstream streamed;
    writeJson(streamed, scan);
    EXPECT_EQ(streamed.str(), toJson(scan).dump(2) + "\n");
    std::ostringstream empty;
    writeJson(empty, ScanResult{});
    EXPECT_EQ(empty.str(), toJson(ScanResult{}).dump(2) + "\n");
}

}  // namespace
}  // namespace kinfolio::cli
