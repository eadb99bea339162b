#include <gtest/gtest.h>

#include <algorithm>

#include "scan/scanner.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::skippedAt;
using testing::TempFolder;

const std::string kInbox = "facebook-sam/your_facebook_activity/messages/inbox/samlee_10001/";
const std::string kPhotoUri = "your_facebook_activity/messages/inbox/samlee_10001/photos/101.jpg";

// 4 June 2025 15:00 UTC and half an hour later.
const std::string kNewer = R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex Morgan"}],
 "messages": [
  {"sender_name": "Sam Lee", "timestamp_ms": 1749051000000, "photos": [{"uri": ")" +
                           kPhotoUri + R"("}]},
  {"sender_name": "Alex Morgan", "timestamp_ms": 1749049200000, "content": "Landed!"}
 ],
 "title": "Sam Lee"})";
// 3 June 2025 08:00 UTC: a call of 14 minutes.
const std::string kOlder = R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex Morgan"}],
 "messages": [
  {"sender_name": "Sam Lee", "timestamp_ms": 1748937600000, "call_duration": 840,
   "content": "Sam started a video chat."}
 ],
 "title": "Sam Lee"})";

TEST(MetaSource, MessageFilesOfOneFolderMakeOneSource) {
    TempFolder folder;
    folder.write(kInbox + "message_1.json", kNewer);
    folder.write(kInbox + "message_2.json", kOlder);
    folder.write(kInbox + "message_10.json", kOlder);  // a byte-identical copy
    folder.write("facebook-sam/" + kPhotoUri, "jpeg bytes");

    std::string before = testing::folderFingerprint(folder.path());
    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "Europe/London");
    EXPECT_EQ(testing::folderFingerprint(folder.path()), before);
    ASSERT_EQ(scan.sources.size(), 1u);
    const Source& s = scan.sources[0];
    EXPECT_EQ(s.kind, SourceKind::messenger);
    EXPECT_EQ(s.id, sha256Hex(kNewer));
    EXPECT_EQ(s.name, "Sam Lee");
    EXPECT_EQ(s.detail, "Messenger · 2 messages · 1 call · Jun 2025");
    EXPECT_EQ(s.notes, (std::vector<std::string>{"Times converted from UTC to Europe/London. "
                                                 "Change Time zone if that is wrong."}));
    ASSERT_EQ(s.files.size(), 3u);
    EXPECT_EQ(s.files[0].path, kInbox + "message_1.json");
    EXPECT_EQ(s.files[1].path, kInbox + "message_2.json");
    EXPECT_EQ(s.files[2].path, "facebook-sam/" + kPhotoUri);

    // In date order, each item naming its own file.
    ASSERT_EQ(s.items.size(), 3u);
    EXPECT_EQ(s.items[0].kind, ItemKind::call);
    EXPECT_EQ(s.items[0].fileID, sha256Hex(kOlder));
    EXPECT_EQ(s.items[1].text, "Landed!");
    EXPECT_EQ(s.items[1].position, 2);
    EXPECT_EQ(s.items[2].details().imageURL, scan.folder + "/facebook-sam/" + kPhotoUri);
    EXPECT_EQ(s.items[2].details().attachmentID, sha256Hex("jpeg bytes"));

    ASSERT_EQ(scan.skipped.size(), 1u);
    EXPECT_EQ(scan.skipped[0], (SkippedFile{kInbox + "message_10.json",
                                            "Same file as " + kInbox + "message_2.json."}));
}

TEST(MetaSource, InstagramPathsGiveInstagramSources) {
    TempFolder folder;
    folder.write("instagram-alex/your_instagram_activity/messages/inbox/sam_1/message_1.json",
                 kOlder);
    folder.write("messages/inbox/kim_2/message_1.json", kNewer);
    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    ASSERT_EQ(scan.sources.size(), 2u);
    std::vector<SourceKind> kinds = {scan.sources[0].kind, scan.sources[1].kind};
    std::sort(kinds.begin(), kinds.end());
    EXPECT_EQ(kinds, (std::vector<SourceKind>{SourceKind::messenger, SourceKind::instagram}));
    for (const auto& s : scan.sources)
        EXPECT_EQ(s.notes.at(0),
                  "Times converted from UTC to UTC. Change Time zone if that is wrong.");
}

TEST(MetaSource, DamagedPartsAreSkippedAndTheRestIsKept) {
    TempFolder folder;
    folder.write("inbox/sam/message_1.json", kNewer.substr(0, kNewer.size() - 20));
    folder.write("inbox/sam/message_2.json", kOlder);
    folder.write("inbox/kim/message_1.json",
                 R"({"participants": [{"name": "Kim"}], "messages": {"sender_name": "Kim"}})");
    ScanResult scan = Scanner::scan(folder.path(), DateOrder::automatic, "UTC");
    ASSERT_EQ(scan.sources.size(), 1u);
    EXPECT_EQ(scan.sources[0].files.at(0).path, "inbox/sam/message_2.json");
    EXPECT_EQ(scan.sources[0].items.size(), 1u);
    ASSERT_EQ(scan.skipped.size(), 2u);
    EXPECT_EQ(skippedAt(scan, "inbox/kim/message_1.json")->reason,
              "Not a Messenger or Instagram message file.");
    EXPECT_EQ(
        skippedAt(scan, "inbox/sam/message_1.json")->reason.rfind("The JSON text is damaged: ", 0),
        0u);
}

}  // namespace
}  // namespace kinfolio::Scanner
