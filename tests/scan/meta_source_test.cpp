#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

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
