#include <set>

#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

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
    testing::TempFolder dir;
    ScanResult r = testing::scanFiles(dir,
                                      {{kInbox + "message_1.json", kNewer},
                                       {kInbox + "message_2.json", kOlder},
                                       {kInbox + "message_10.json", kOlder},  // a copy
                                       {"facebook-sam/" + kPhotoUri, "jpeg bytes"}},
                                      DateOrder::automatic, "Europe/London");
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  kInbox + "message_1.json | Sam Lee | Messenger · 2 messages · 1 call · Jun 2025",
                  kInbox + "message_10.json | Same file as " + kInbox + "message_2.json."}));
    const Source& s = r.sources.at(0);
    EXPECT_EQ(s.kind, SourceKind::messenger);
    EXPECT_EQ(s.id, sha256Hex(kNewer));
    EXPECT_EQ(s.notes, (std::vector<std::string>{"Times converted from UTC to Europe/London. "
                                                 "Change Time zone if that is wrong."}));
    ASSERT_EQ(s.files.size(), 3u);
    EXPECT_EQ(s.files[1].path, kInbox + "message_2.json");
    EXPECT_EQ(s.files[2].path, "facebook-sam/" + kPhotoUri);
    // In date order, each item naming its own file.
    EXPECT_EQ(testing::itemLines(s),
              (std::vector<std::string>{"2025-06-03 09:00 Sam Lee: Call",
                                        "2025-06-04 16:00 Alex Morgan: Landed!",
                                        "2025-06-04 16:30 Sam Lee: "}));
    EXPECT_EQ(s.items[0].kind, ItemKind::call);
    EXPECT_EQ(s.items[0].fileID, sha256Hex(kOlder));
    EXPECT_EQ(s.items[1].position, 2);
    EXPECT_EQ(s.items[2].details().imageURL, r.folder + "/facebook-sam/" + kPhotoUri);
    EXPECT_EQ(s.items[2].details().attachmentID, sha256Hex("jpeg bytes"));
}

TEST(MetaSource, InstagramPathsGiveInstagramSources) {
    ScanResult r = testing::scanFiles(
        {{"instagram-alex/your_instagram_activity/messages/inbox/sam_1/message_1.json", kOlder},
         {"messages/inbox/kim_2/message_1.json", kNewer}});
    ASSERT_EQ(r.sources.size(), 2u);
    std::set<SourceKind> kinds = {r.sources[0].kind, r.sources[1].kind};
    EXPECT_EQ(kinds, (std::set{SourceKind::messenger, SourceKind::instagram}));
    for (const auto& s : r.sources)
        EXPECT_EQ(s.notes.at(0),
                  "Times converted from UTC to UTC. Change Time zone if that is wrong.");
}

TEST(MetaSource, DamagedPartsAreSkippedAndTheRestIsKept) {
    ScanResult r = testing::scanFiles(
        {{"inbox/sam/message_1.json", kNewer.substr(0, kNewer.size() - 20)},
         {"inbox/sam/message_2.json", kOlder},
         {"inbox/kim/message_1.json",
          R"({"participants": [{"name": "Kim"}], "messages": {"sender_name": "Kim"}})"}});
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "inbox/sam/message_2.json | Sam Lee | Messenger · 0 messages · 1 call · Jun 2025",
                  "inbox/kim/message_1.json | Not a Messenger or Instagram message file.",
                  "inbox/sam/message_1.json | The JSON text is damaged: it stops in the middle, "
                  "so the file was probably cut short."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
