#include <unistd.h>

#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

const std::string kPhotoPath = "chats/chat_001/photos/photo_1@03-05-2025_20-07-00.jpg";

std::string message(const std::string& date, const std::string& from, const std::string& text,
                    const std::string& extra = "") {
    return R"({"type": "message", "date": ")" + date + R"(", "from": ")" + from +
           R"(", "text": ")" + text + "\"" + extra + "}";
}

// A whole-account export: Sam's chat with one photo, an empty chat, and a
// group chat with another photo whose file is missing.
std::string wholeAccount() {
    return R"({
 "about": "Here is the data you requested.",
 "chats": {
  "about": "This page lists all chats from this export.",
  "list": [
   {"name": "Sam Lee", "type": "personal_chat", "id": 1, "messages": [)" +
           message("2025-05-03T20:00:00", "Sam Lee", "Did you land safely?") + "," +
           message("2025-05-03T20:07:00", "Alex Morgan", "",
                   R"(, "photo": ")" + kPhotoPath + "\"") +
           R"(]},
   {"name": "Nobody", "type": "personal_chat", "id": 2, "messages": []},
   {"name": "Family", "type": "private_group", "id": 3, "messages": [)" +
           message("2025-06-01T09:00:00", "Kim", "Lunch on Sunday?") + "," +
           message("2025-06-01T09:05:00", "Sam Lee", "",
                   R"(, "photo": "chats/chat_003/photos/missing.jpg")") +
           "]}\n  ]\n }\n}\n";
}

TEST(TelegramSource, DamagedOrOversizedExportsAreSkippedWithAReason) {
    testing::TempFolder folder;
    // 300 MB without writing them: a sparse file.
    ASSERT_EQ(::truncate(folder.write("huge/result.json", "").c_str(), 300'000'000), 0);
    std::string json = wholeAccount();
    const std::string but = "Looks like a Telegram export, but: ";
    ScanResult scan = testing::scanFiles(
        folder, {{"cut/result.json", json.substr(0, json.size() * 2 / 3)},
                 {"broken/result.json", R"({"chats": {"list": [{"name": "a",, "messages": []}]}})"},
                 {"empty/result.json", R"({"chats": {"list": []}})"}});
    EXPECT_EQ(testing::shown(scan),
              (std::vector<std::string>{
                  "broken/result.json | " + but +
                      "The JSON text is damaged: its brackets, commas or quote marks are out of "
                      "place.",
                  "cut/result.json | " + but +
                      "The JSON text is damaged: it stops in the middle, so the file was "
                      "probably cut short.",
                  "empty/result.json | " + but + "No chats in this Telegram export.",
                  "huge/result.json | Data file that is not a Telegram, Messenger or Instagram "
                  "export."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
