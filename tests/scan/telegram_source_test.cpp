#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "scan/scanner.h"
#include "selection/selection.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::skippedAt;
using testing::sourceNamed;
using testing::TempFolder;

const std::string kExport = "Telegram Desktop/DataExport_2025-06-01/";

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
                   R"(, "photo": "chats/chat_001/photos/photo_1@03-05-2025_20-07-00.jpg")") +
           R"(]},
   {"name": "Nobody", "type": "personal_chat", "id": 2, "messages": []},
   {"name": "Family", "type": "private_group", "id": 3, "messages": [)" +
           message("2025-06-01T09:00:00", "Kim", "Lunch on Sunday?") + "," +
           message("2025-06-01T09:05:00", "Sam Lee", "",
                   R"(, "photo": "chats/chat_003/photos/missing.jpg")") +
           "]}\n  ]\n }\n}\n";
}

TEST(TelegramSource, WholeAccountGivesOneSourcePerChatWithItsOwnId) {
    TempFolder folder;
    std::string json = wholeAccount();
    folder.write(kExport + "result.json", json);
    std::string photo = "\xFF\xD8\xFF\xE0 fake jpeg";
    folder.write(kExport + "chats/chat_001/photos/photo_1@03-05-2025_20-07-00.jpg", photo);

    std::string before = testing::folderFingerprint(folder.path());
    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    EXPECT_EQ(testing::folderFingerprint(folder.path()), before);
    std::string sha = sha256Hex(json);
    ASSERT_EQ(scan.sources.size(), 2u);
    const Source* sam = sourceNamed(scan, "Sam Lee");
    const Source* family = sourceNamed(scan, "Family");
    ASSERT_TRUE(sam && family);
    EXPECT_EQ(sam->id, sha + "#1");
    EXPECT_EQ(family->id, sha + "#3");
    EXPECT_EQ(sam->kind, SourceKind::telegram);
    EXPECT_EQ(sam->detail, "Telegram · 2 messages · May 2025");
    EXPECT_TRUE(sam->notes.empty());

    // Items keep the bare SHA-256 of result.json.
    for (const auto& item : sam->items)
        EXPECT_EQ(item.fileID, sha);
    ASSERT_EQ(sam->items.size(), 2u);
    EXPECT_EQ(sam->items[1].id(), sha + ":2");

    // The photo is linked to its message and listed only with Sam's chat.
    std::string photoPath = kExport + "chats/chat_001/photos/photo_1@03-05-2025_20-07-00.jpg";
    ASSERT_EQ(sam->files.size(), 2u);
    EXPECT_EQ(sam->files[0], (FileRecord{kExport + "result.json", sha, (int64_t)json.size()}));
    EXPECT_EQ(sam->files[1], (FileRecord{photoPath, sha256Hex(photo), (int64_t)photo.size()}));
    EXPECT_EQ(sam->items[1].details().imageURL, scan.folder + "/" + photoPath);
    EXPECT_EQ(sam->items[1].details().attachmentID, sha256Hex(photo));

    // A missing photo leaves a plain message that names it.
    ASSERT_EQ(family->files.size(), 1u);
    EXPECT_EQ(family->items.at(1).details().attachmentName, "chats/chat_003/photos/missing.jpg");
    EXPECT_FALSE(family->items.at(1).details().imageURL);
    EXPECT_EQ(skippedAt(scan, kExport + "result.json"), nullptr);
}

// Both chats of this whole-account export begin with a message of their own:
// counted per chat, each would be message 1 of the same file.
TEST(TelegramSource, WholeAccountItemIdsAreUniqueStableAndTickedOneByOne) {
    TempFolder folder;
    const std::string json = R"({"chats": {"list": [
   {"name": "Sam Lee", "type": "personal_chat", "messages": [)" +
                             message("2025-05-03T20:00:00", "Sam Lee", "Did you land safely?") +
                             R"(]},
   {"name": "Family", "type": "private_group", "messages": [)" +
                             message("2025-05-03T20:00:00", "Kim", "Lunch on Sunday?") + "]}]}}";
    folder.write(kExport + "result.json", json);
    auto allIds = [](const ScanResult& scan) {
        std::vector<std::string> ids;
        for (const auto& source : scan.sources)
            for (const auto& item : source.items)
                ids.push_back(item.id());
        return ids;
    };

    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    std::vector<std::string> ids = allIds(scan);
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_EQ(allIds(Scanner::scan(folder.path(), DateOrder::automatic, "UTC")), ids);

    // Unticking Sam's message in the item picker leaves Kim's in.
    Settings settings;
    settings.excludedItems = {sourceNamed(scan, "Sam Lee")->items.at(0).id()};
    Selection::ItemRefs chosen = Selection::selected(scan, settings);
    ASSERT_EQ(chosen.size(), 1u);
    EXPECT_EQ(chosen[0]->text, "Lunch on Sunday?");
}

TEST(TelegramSource, SingleChatKeepsTheBareFingerprint) {
    TempFolder folder;
    std::string json = R"({"name": "Sam Lee", "type": "personal_chat", "messages": [)" +
                       message("2025-05-03T20:00:00", "Sam Lee", "Hi") + "]}";
    folder.write("ChatExport/result.json", json);
    // The photo lies in the export folder's parent: found by looking upward.
    folder.write("photos/photo_2.jpg", "jpeg bytes");
    std::string withPhoto =
        R"({"name": "Alex", "type": "personal_chat", "messages": [)" +
        message("2025-05-04T20:00:00", "Alex", "", R"(, "photo": "photos/photo_2.jpg")") + "]}";
    folder.write("ChatExport/sub/result.json", withPhoto);

    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    ASSERT_EQ(scan.sources.size(), 2u);
    EXPECT_EQ(sourceNamed(scan, "Sam Lee")->id, sha256Hex(json));
    const Source* alex = sourceNamed(scan, "Alex");
    ASSERT_TRUE(alex);
    EXPECT_EQ(alex->id, sha256Hex(withPhoto));
    ASSERT_EQ(alex->files.size(), 2u);
    EXPECT_EQ(alex->files[1].path, "photos/photo_2.jpg");
    EXPECT_EQ(skippedAt(scan, "ChatExport/result.json"), nullptr);
    EXPECT_EQ(skippedAt(scan, "ChatExport/sub/result.json"), nullptr);
}

TEST(TelegramSource, DamagedExportsAreSkippedWithAReason) {
    TempFolder folder;
    std::string json = wholeAccount();
    folder.write("cut/result.json", json.substr(0, json.size() * 2 / 3));
    folder.write("broken/result.json", R"({"chats": {"list": [{"name": "a",, "messages": []}]}})");
    folder.write("empty/result.json", R"({"chats": {"list": []}})");

    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(scan.sources.empty());
    ASSERT_EQ(scan.skipped.size(), 3u);
    EXPECT_EQ(skippedAt(scan, "cut/result.json")->reason,
              "Looks like a Telegram export, but: The JSON text is damaged: it stops in the "
              "middle, so the file was probably cut short.");
    EXPECT_EQ(skippedAt(scan, "broken/result.json")->reason,
              "Looks like a Telegram export, but: The JSON text is damaged: its brackets, commas "
              "or quote marks are out of place.");
    EXPECT_EQ(skippedAt(scan, "empty/result.json")->reason,
              "Looks like a Telegram export, but: No chats in this Telegram export.");
}

TEST(TelegramSource, OversizedFileIsNotReadAsAnExport) {
    TempFolder folder;
    std::string path = folder.write("huge/result.json", "");
    // 300 MB without writing them: a sparse file.
    int fd = ::open(path.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, 300'000'000), 0);
    ::close(fd);

    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(scan.sources.empty());
    ASSERT_EQ(scan.skipped.size(), 1u);
    EXPECT_EQ(scan.skipped[0],
              (SkippedFile{"huge/result.json",
                           "Data file that is not a Telegram, Messenger or Instagram export."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
