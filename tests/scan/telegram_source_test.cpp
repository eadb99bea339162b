#include <unistd.h>

#include "selection/selection.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::scanFiles;
using testing::sourceNamed;

const std::string kExport = "Telegram Desktop/DataExport_2025-06-01/";
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

TEST(TelegramSource, WholeAccountGivesOneSourcePerChatWithItsOwnId) {
    std::string json = wholeAccount(), photo = "\xFF\xD8\xFF\xE0 fake jpeg";
    ScanResult scan = scanFiles({{kExport + "result.json", json}, {kExport + kPhotoPath, photo}});
    EXPECT_EQ(testing::shown(scan),
              (std::vector<std::string>{
                  kExport + "result.json | Family | Telegram · 2 messages · Jun 2025",
                  kExport + "result.json | Sam Lee | Telegram · 2 messages · May 2025"}));
    std::string sha = sha256Hex(json);
    const Source* sam = sourceNamed(scan, "Sam Lee");
    const Source* family = sourceNamed(scan, "Family");
    EXPECT_EQ(sam->id, sha + "#1");
    EXPECT_EQ(family->id, sha + "#3");
    EXPECT_EQ(sam->kind, SourceKind::telegram);
    EXPECT_TRUE(sam->notes.empty());
    // Items keep the bare SHA-256 of result.json.
    ASSERT_EQ(sam->items.size(), 2u);
    EXPECT_EQ(sam->items[0].fileID, sha);
    EXPECT_EQ(sam->items[1].id(), sha + ":2");

    // The photo is linked to its message and listed only with Sam's chat.
    ASSERT_EQ(sam->files.size(), 2u);
    EXPECT_EQ(sam->files[0], (FileRecord{kExport + "result.json", sha, (int64_t)json.size()}));
    EXPECT_EQ(sam->files[1],
              (FileRecord{kExport + kPhotoPath, sha256Hex(photo), (int64_t)photo.size()}));
    EXPECT_EQ(sam->items[1].details().imageURL, scan.folder + "/" + kExport + kPhotoPath);
    EXPECT_EQ(sam->items[1].details().attachmentID, sha256Hex(photo));

    // A missing photo leaves a plain message that names it.
    ASSERT_EQ(family->files.size(), 1u);
    EXPECT_EQ(family->items.at(1).details().attachmentName, "chats/chat_003/photos/missing.jpg");
    EXPECT_FALSE(family->items.at(1).details().imageURL);
}

// Both chats of this whole-account export begin with a message of their own:
// counted per chat, each would be message 1 of the same file.
TEST(TelegramSource, WholeAccountItemIdsAreUniqueStableAndTickedOneByOne) {
    testing::TempFolder folder;
    folder.write(
        kExport + "result.json",
        R"({"chats": {"list": [{"name": "Sam Lee", "type": "personal_chat", "messages": [)" +
            message("2025-05-03T20:00:00", "Sam Lee", "Did you land safely?") +
            R"(]}, {"name": "Family", "type": "private_group", "messages": [)" +
            message("2025-05-03T20:00:00", "Kim", "Lunch on Sunday?") + "]}]}}");
    auto allIds = [](const ScanResult& scan) {
        std::vector<std::string> ids;
        for (const auto& source : scan.sources)
            for (const auto& item : source.items)
                ids.push_back(item.id());
        return ids;
    };
    ScanResult scan = testing::scanFiles(folder, {});
    std::vector<std::string> ids = allIds(scan);
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_EQ(allIds(testing::scanFiles(folder, {})), ids);

    // Unticking Sam's message in the item picker leaves Kim's in.
    Settings settings;
    settings.excludedItems = {sourceNamed(scan, "Sam Lee")->items.at(0).id()};
    Selection::ItemRefs chosen = Selection::selected(scan, settings);
    ASSERT_EQ(chosen.size(), 1u);
    EXPECT_EQ(chosen[0]->text, "Lunch on Sunday?");
}

// A single chat's export keeps the bare fingerprint; a photo missing beside
// it is looked for in the folders above.
TEST(TelegramSource, SingleChatKeepsTheBareFingerprint) {
    std::string json = R"({"name": "Sam Lee", "type": "personal_chat", "messages": [)" +
                       message("2025-05-03T20:00:00", "Sam Lee", "Hi") + "]}";
    std::string withPhoto =
        R"({"name": "Alex", "type": "personal_chat", "messages": [)" +
        message("2025-05-04T20:00:00", "Alex", "", R"(, "photo": "photos/photo_2.jpg")") + "]}";
    ScanResult scan = scanFiles({{"ChatExport/result.json", json},
                                 {"photos/photo_2.jpg", "jpeg bytes"},
                                 {"ChatExport/sub/result.json", withPhoto}});
    EXPECT_EQ(testing::shown(scan),
              (std::vector<std::string>{
                  "ChatExport/result.json | Sam Lee | Telegram · 1 message · May 2025",
                  "ChatExport/sub/result.json | Alex | Telegram · 1 message · May 2025"}));
    EXPECT_EQ(sourceNamed(scan, "Sam Lee")->id, sha256Hex(json));
    const Source* alex = sourceNamed(scan, "Alex");
    EXPECT_EQ(alex->id, sha256Hex(withPhoto));
    ASSERT_EQ(alex->files.size(), 2u);
    EXPECT_EQ(alex->files[1].path, "photos/photo_2.jpg");
}

TEST(TelegramSource, DamagedOrOversizedExportsAreSkippedWithAReason) {
    testing::TempFolder folder;
    // 300 MB without writing them: a sparse file.
    ASSERT_EQ(::truncate(folder.write("huge/result.json", "").c_str(), 300'000'000), 0);
    std::string json = wholeAccount();
    const std::string but = "Looks like a Telegram export, but: ";
    ScanResult scan = scanFiles(
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
