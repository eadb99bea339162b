#include "importers/meta.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using testing::itemLines;

const std::string kFile = "feed01";

MetaChat read(const std::string& messages, const char* zone = "UTC",
              const std::string& head = R"("title": "Sam Lee",)") {
    std::unique_ptr<icu::TimeZone> z(icu::TimeZone::createTimeZone(zone));
    return meta(R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex Morgan"}],)" + head +
                    R"("messages": [)" + messages + "]}",
                kFile, *z);
}

TEST(Meta, EachKindOfMessageBecomesItsItem) {
    const std::tuple<const char*, std::string, std::vector<std::string>> cases[] = {
        {"mis-encoded text is repaired",
         R"({"sender_name": "Zo\u00c3\u00ab", "timestamp_ms": 1749049200000,
             "content": "Found the caf\u00c3\u00a9 from our first date \u00e2\u009d\u00a4"})",
         {"1 2025-06-04 15:00:00 Zo\u00eb: Found the caf\u00e9 from our first date \u2764"}},
        {"calls replace their content",
         R"({"sender_name": "Alex Morgan", "timestamp_ms": 1749049200000, "call_duration": 0,
             "content": "Alex started a video chat."},
            {"sender_name": "Alex Morgan", "timestamp_ms": 1749049100000, "call_duration": 840,
             "content": "Alex started a video chat."})",
         {"1 2025-06-04 15:00:00 Alex Morgan: Missed call (call, 0 s)",
          "2 2025-06-04 14:58:20 Alex Morgan: Call (call, 840 s)"}},
        {"the first photo is the attachment; placeholders fill empty messages",
         R"({"sender_name": "Sam", "timestamp_ms": 1000, "photos": [
                {"uri": "your_facebook_activity/messages/inbox/samlee_10001/photos/101.jpg"},
                {"uri": "your_facebook_activity/messages/inbox/samlee_10001/photos/102.jpg"}]},
            {"sender_name": "Sam", "timestamp_ms": 2000, "videos": [{"uri": "v.mp4"}]},
            {"sender_name": "Sam", "timestamp_ms": 3000, "audio_files": [{"uri": "a.mp4"}]},
            {"sender_name": "Sam", "timestamp_ms": 4000, "sticker": {"uri": "s.png"}},
            {"sender_name": "Sam", "timestamp_ms": 5000, "content": "look", "videos": []},
            {"sender_name": "Sam", "timestamp_ms": 6000, "photos": []})",
         {"1 1970-01-01 00:00:01 Sam:  "
          "[your_facebook_activity/messages/inbox/samlee_10001/photos/101.jpg]",
          "2 1970-01-01 00:00:02 Sam: [video]", "3 1970-01-01 00:00:03 Sam: [voice message]",
          "4 1970-01-01 00:00:04 Sam: [sticker]", "5 1970-01-01 00:00:05 Sam: look",
          "6 1970-01-01 00:00:06 Sam: "}},
        // A number far outside the years 1 to 9999 is damage, not a time.
        {"messages without a numeric calendar time are skipped but counted",
         R"({"sender_name": "Sam", "content": "no time"},
            {"sender_name": "Sam", "timestamp_ms": "1749049200000"},
            7,
            {"sender_name": "Sam", "timestamp_ms": 1e300, "content": "far"},
            {"sender_name": "Sam", "timestamp_ms": -1e300, "content": "past"},
            {"sender_name": "Sam", "timestamp_ms": 253402300800000, "content": "year 10000"},
            {"sender_name": "Sam", "timestamp_ms": 253402300799999, "content": "last"})",
         {"7 9999-12-31 23:59:59 Sam: last"}},
    };
    for (const auto& [name, messages, items] : cases)
        EXPECT_EQ(itemLines(read(messages).items), items) << name;
}

TEST(FixMeta, RepairsOnlyTextThatNeedsIt) {
    const std::pair<const char*, const char*> cases[] = {
        {"\u00c3\u00a9", "\u00e9"},
        {"plain ASCII", "plain ASCII"},
        {"caf\u00e9 \u2764", "caf\u00e9 \u2764"},  // real characters, one above U+00FF
        {"caf\u00e9", "caf\u00e9"},                // Latin-1 letters that are no UTF-8 bytes
        {"", ""},
    };
    for (const auto& [text, fixed] : cases)
        EXPECT_EQ(fixMeta(text), fixed) << text;
}

TEST(Meta, RefusalsSayWhatIsWrong) {
    const std::pair<const char*, const char*> cases[] = {
        {"[]", "Not a Messenger or Instagram message file."},
        {R"({"participants": [], "messages": {}})", "Not a Messenger or Instagram message file."},
        {R"({"participants": [], "messages": [)",
         "The JSON text is damaged: it stops in the middle, so the file was probably cut short."},
        {R"({"participants": [], "messages": [], "x": tru})",
         "The JSON text is damaged: a word such as true, false or null is misspelt."},
    };
    std::unique_ptr<icu::TimeZone> utc(icu::TimeZone::createTimeZone("UTC"));
    for (const auto& [json, message] : cases)
        EXPECT_EQ(testing::errorOf([&] { meta(json, kFile, *utc); }), message) << json;
}

TEST(IsMeta, NeedsParticipantsAndMessagesOrSenders) {
    EXPECT_TRUE(isMeta(R"({"participants": [], "messages": []})"));
    EXPECT_TRUE(isMeta(R"({"participants": [{"name": "a"}], "x": {"sender_name": "a"}})"));
    EXPECT_FALSE(isMeta(R"({"participants": []})"));
    EXPECT_FALSE(isMeta(R"({"name": "Sam", "type": "personal_chat", "messages": []})"));
}

}  // namespace
}  // namespace kinfolio::Importer
