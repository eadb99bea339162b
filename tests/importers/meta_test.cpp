#include "importers/meta.h"

#include <gtest/gtest.h>

#include <memory>

#include "model/calendar.h"
#include "model/text.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

const std::string kFile = "feed01";

std::unique_ptr<icu::TimeZone> zoneNamed(const char* id) {
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(id));
}

MetaChat read(const std::string& messages, const char* zone = "Europe/London",
              const std::string& head = R"("title": "Sam Lee",)") {
    auto z = zoneNamed(zone);
    return meta(R"({"participants": [{"name": "Sam Lee"}, {"name": "Alex Morgan"}],)" + head +
                    R"("messages": [)" + messages + "]}",
                kFile, *z);
}

std::string errorOf(const std::string& json) {
    return testing::errorOf([&] { meta(json, kFile, *zoneNamed("UTC")); });
}

TEST(Meta, SummerTimeInLondonMovesTheInstantOneHour) {
    auto chat = read(R"({"sender_name": "Sam Lee", "timestamp_ms": 1749049200000,
                         "content": "Landed!"})");
    ASSERT_EQ(chat.items.size(), 1u);
    const Evidence& e = chat.items[0];
    EXPECT_EQ(e.date, *makeDate(2025, 6, 4, 16, 0, 0));
    EXPECT_EQ(format(e.date, "yyyy-MM-dd HH:mm"), "2025-06-04 16:00");
    EXPECT_EQ(e.kind, ItemKind::message);
    EXPECT_EQ(e.sender, "Sam Lee");
    EXPECT_EQ(e.text, "Landed!");
    EXPECT_EQ(e.fileID, kFile);
    EXPECT_EQ(e.position, 1);
    EXPECT_FALSE(e.dateIsEstimated);
}

TEST(Meta, WinterTimeAndOtherZones) {
    // 15 January 2025 15:00 UTC.
    const char* message = R"({"sender_name": "Sam", "timestamp_ms": 1736953200000})";
    EXPECT_EQ(read(message, "Europe/London").items.at(0).date, *makeDate(2025, 1, 15, 15, 0, 0));
    EXPECT_EQ(read(message, "Asia/Kolkata").items.at(0).date, *makeDate(2025, 1, 15, 20, 30, 0));
    EXPECT_EQ(read(message, "America/New_York").items.at(0).date, *makeDate(2025, 1, 15, 10, 0, 0));
}

TEST(Meta, RepairsMisEncodedText) {
    auto chat = read(R"({"sender_name": "Zo\u00c3\u00ab", "timestamp_ms": 1749049200000,
        "content": "Found the caf\u00c3\u00a9 from our first date \u00e2\u009d\u00a4"})");
    EXPECT_EQ(chat.items.at(0).text, "Found the caf\u00e9 from our first date \u2764");
    EXPECT_EQ(chat.items.at(0).sender, "Zo\u00eb");
}

TEST(FixMeta, LeavesTextThatNeedsNoRepairAlone) {
    EXPECT_EQ(fixMeta("plain ASCII"), "plain ASCII");
    // Already real characters, one of them above U+00FF.
    EXPECT_EQ(fixMeta("caf\u00e9 \u2764"), "caf\u00e9 \u2764");
    // Latin-1 letters that do not form UTF-8 bytes.
    EXPECT_EQ(fixMeta("caf\u00e9"), "caf\u00e9");
    EXPECT_EQ(fixMeta(""), "");
    EXPECT_EQ(fixMeta("\u00c3\u00a9"), "\u00e9");
}

TEST(Meta, CallsReplaceTheirContent) {
    auto chat = read(R"(
        {"sender_name": "Alex Morgan", "timestamp_ms": 1749049200000, "call_duration": 0,
         "content": "Alex started a video chat."},
        {"sender_name": "Alex Morgan", "timestamp_ms": 1749049100000, "call_duration": 840,
         "content": "Alex started a video chat."})");
    ASSERT_EQ(chat.items.size(), 2u);
    EXPECT_EQ(chat.items[0].kind, ItemKind::call);
    EXPECT_EQ(chat.items[0].text, "Missed call");
    EXPECT_EQ(chat.items[0].details().duration, 0.0);
    EXPECT_EQ(chat.items[1].kind, ItemKind::call);
    EXPECT_EQ(chat.items[1].text, "Call");
    EXPECT_EQ(chat.items[1].details().duration, 840.0);
    EXPECT_EQ(chat.items[1].sender, "Alex Morgan");
    EXPECT_EQ(chat.items[1].position, 2);
}

TEST(Meta, FirstPhotoIsTheAttachmentAndPlaceholdersFillEmptyMessages) {
    auto chat = read(R"(
        {"sender_name": "Sam", "timestamp_ms": 1, "photos": [
            {"uri": "your_facebook_activity/messages/inbox/samlee_10001/photos/101.jpg"},
            {"uri": "your_facebook_activity/messages/inbox/samlee_10001/photos/102.jpg"}]},
        {"sender_name": "Sam", "timestamp_ms": 2, "videos": [{"uri": "v.mp4"}]},
        {"sender_name": "Sam", "timestamp_ms": 3, "audio_files": [{"uri": "a.mp4"}]},
        {"sender_name": "Sam", "timestamp_ms": 4, "sticker": {"uri": "s.png"}},
        {"sender_name": "Sam", "timestamp_ms": 5, "content": "look", "videos": []},
        {"sender_name": "Sam", "timestamp_ms": 6, "photos": []})");
    ASSERT_EQ(chat.items.size(), 6u);
    EXPECT_EQ(chat.items[0].details().attachmentName,
              "your_facebook_activity/messages/inbox/samlee_10001/photos/101.jpg");
    EXPECT_EQ(chat.items[0].text, "");
    EXPECT_EQ(chat.items[1].text, "[video]");
    EXPECT_EQ(chat.items[2].text, "[voice message]");
    EXPECT_EQ(chat.items[3].text, "[sticker]");
    EXPECT_EQ(chat.items[4].text, "look");
    EXPECT_EQ(chat.items[5].text, "");
    EXPECT_FALSE(chat.items[5].details().attachmentName);
}

TEST(Meta, WithoutTitleTheChatIsNamedAfterItsParticipants) {
    auto chat = read(R"({"sender_name": "Sam", "timestamp_ms": 1})", "UTC", "");
    EXPECT_EQ(chat.title, "Sam Lee & Alex Morgan");
    EXPECT_EQ(chat.participants, (std::vector<std::string>{"Sam Lee", "Alex Morgan"}));
    EXPECT_EQ(read(R"({"timestamp_ms": 1})", "UTC", R"("title": "Bar\u00c3\u00a7a",)").title,
              "Bar\u00e7a");
}

TEST(Meta, MessagesWithoutANumericTimestampAreSkippedButCounted) {
    auto chat = read(R"({"sender_name": "Sam", "content": "no time"},
                        {"sender_name": "Sam", "timestamp_ms": "1749049200000"},
                        7,
                        {"sender_name": "Sam", "timestamp_ms": 1749049200000, "content": "ok"})");
    ASSERT_EQ(chat.items.size(), 1u);
    EXPECT_EQ(chat.items[0].position, 4);
    EXPECT_EQ(chat.items[0].text, "ok");
}

TEST(Meta, MessagesWhoseTimestampIsNoCalendarTimeAreSkipped) {
    auto chat = read(R"({"sender_name": "Sam", "timestamp_ms": 1e300, "content": "far"},
                        {"sender_name": "Sam", "timestamp_ms": -1e300, "content": "past"},
                        {"sender_name": "Sam", "timestamp_ms": 1749049200000, "content": "ok"})");
    ASSERT_EQ(chat.items.size(), 1u);
    EXPECT_EQ(chat.items[0].text, "ok");
    EXPECT_EQ(chat.items[0].position, 3);
}

TEST(Meta, RefusalsSayWhatIsWrong) {
    EXPECT_EQ(errorOf("[]"), "Not a Messenger or Instagram message file.");
    EXPECT_EQ(errorOf(R"({"participants": [], "messages": {}})"),
              "Not a Messenger or Instagram message file.");
    EXPECT_EQ(
        errorOf(R"({"participants": [], "messages": [)"),
        "The JSON text is damaged: it stops in the middle, so the file was probably cut short.");
    EXPECT_EQ(errorOf(R"({"participants": [], "messages": [], "x": tru})"),
              "The JSON text is damaged: a word such as true, false or null is misspelt.");
}

TEST(IsMeta, NeedsParticipantsAndMessagesOrSenders) {
    EXPECT_TRUE(isMeta(R"({"participants": [], "messages": []})"));
    EXPECT_TRUE(isMeta(R"({"participants": [{"name": "a"}], "x": {"sender_name": "a"}})"));
    EXPECT_FALSE(isMeta(R"({"participants": []})"));
    EXPECT_FALSE(isMeta(R"({"name": "Sam", "type": "personal_chat", "messages": []})"));
}

}  // namespace
}  // namespace kinfolio::Importer
