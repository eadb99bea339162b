#include "importers/telegram.h"

#include <gtest/gtest.h>

#include "model/calendar.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

const std::string kFile = "ab12cd";

// A single-chat export as Telegram Desktop writes it (abridged).
const char* kSingleChat = R"({
 "name": "Sam Lee",
 "type": "personal_chat",
 "id": 4242,
 "messages": [
  {"id": 1, "type": "message", "date": "2025-05-03T20:00:00", "from": "Sam Lee",
   "text": "Did you land safely?"},
  {"id": 2, "type": "message", "date": "2025-05-03T20:05:00", "from": "Alex Morgan",
   "text": "Just landed!"},
  {"id": 3, "type": "message", "date": "2025-05-03T20:07:00", "from": "Sam Lee",
   "text": "Bring the blue scarf, it's cold here."},
  {"id": 4, "type": "service", "date": "2025-05-04T21:00:00", "actor": "Alex Morgan",
   "action": "phone_call", "duration_seconds": 1520}
 ]
})";

std::string withMessages(const std::string& messages) {
    return R"({"name": "Sam", "type": "personal_chat", "messages": [)" + messages + "]}";
}

Evidence only(const std::string& json) {
    auto chats = telegram(json, kFile);
    EXPECT_EQ(chats.size(), 1u);
    EXPECT_EQ(chats.at(0).items.size(), 1u);
    return chats.at(0).items.at(0);
}

std::string errorOf(const std::string& json) {
    return testing::errorOf([&] { telegram(json, kFile); });
}

TEST(Telegram, SingleChatGivesMessagesAndCallInOrder) {
    auto chats = telegram(kSingleChat, kFile);
    ASSERT_EQ(chats.size(), 1u);
    EXPECT_EQ(chats[0].name, "Sam Lee");
    EXPECT_EQ(chats[0].placeInList, 0);
    const auto& items = chats[0].items;
    ASSERT_EQ(items.size(), 4u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(items[i].kind, ItemKind::message);
        EXPECT_EQ(items[i].position, i + 1);
        EXPECT_EQ(items[i].fileID, kFile);
        EXPECT_FALSE(items[i].dateIsEstimated);
        EXPECT_FALSE(items[i].details().duration);
    }
    EXPECT_EQ(items[0].sender, "Sam Lee");
    EXPECT_EQ(items[1].text, "Just landed!");
    EXPECT_EQ(items[0].date, *makeDate(2025, 5, 3, 20, 0, 0));
    EXPECT_EQ(items[2].date, *makeDate(2025, 5, 3, 20, 7, 0));

    const Evidence& call = items[3];
    EXPECT_EQ(call.kind, ItemKind::call);
    EXPECT_EQ(call.position, 4);
    EXPECT_EQ(call.text, "Call");
    EXPECT_EQ(call.sender, "Alex Morgan");
    EXPECT_EQ(call.details().duration, 1520.0);
    EXPECT_EQ(call.date, *makeDate(2025, 5, 4, 21, 0, 0));
    EXPECT_FALSE(call.details().attachmentName);
}

TEST(Telegram, MissedCallAndCallWithoutDuration) {
    auto chats = telegram(withMessages(R"(
        {"type": "service", "date": "2025-05-04T21:00:00", "actor": "Sam",
         "action": "phone_call", "discard_reason": "missed"},
        {"type": "service", "date": "2025-05-04T21:05:00", "action": "phone_call",
         "discard_reason": "hangup"})"),
                          kFile);
    const auto& items = chats.at(0).items;
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].text, "Missed call");
    EXPECT_FALSE(items[0].details().duration);
    EXPECT_EQ(items[1].text, "Call");
    EXPECT_EQ(items[1].sender, "");
}

TEST(Telegram, TextArrayJoinsStringsAndEntityTexts) {
    Evidence e = only(withMessages(R"({"type": "message", "date": "2025-05-03T20:00:00",
        "from": "Sam", "text": ["So jealous. ", {"type": "bold", "text": "Send photos"},
        42, {"type": "link"}]})"));
    EXPECT_EQ(e.text, "So jealous. Send photos");
}

TEST(Telegram, TextOfOtherTypesIsEmpty) {
    simdjson::dom::document doc;
    EXPECT_EQ(telegramText(std::nullopt), "");
    EXPECT_EQ(telegramText(parseJson(doc, "12")), "");
    EXPECT_EQ(telegramText(parseJson(doc, "null")), "");
    EXPECT_EQ(telegramText(parseJson(doc, R"("caf\u00e9")")), "caf\u00e9");
}

TEST(Telegram, PhotoOnlyMessageKeepsEmptyTextAndNamesThePhoto) {
    Evidence e = only(withMessages(R"({"type": "message", "date": "2025-05-03T20:07:00",
        "from": "Sam", "photo": "photos/photo_1@03-05-2025_20-07-00.jpg", "width": 1280,
        "media_type": "photo", "text": ""})"));
    EXPECT_EQ(e.text, "");
    EXPECT_EQ(e.details().attachmentName, "photos/photo_1@03-05-2025_20-07-00.jpg");
    EXPECT_FALSE(e.details().imageURL);
    EXPECT_FALSE(e.details().attachmentID);
}

TEST(Telegram, OnlyJpegFilesCountAsPhotos) {
    auto items = telegram(withMessages(R"(
        {"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text": "",
         "file": "files/IMG_1.jpg", "mime_type": "image/jpeg"},
        {"type": "message", "date": "2025-05-03T20:01:00", "from": "Sam", "text": "",
         "file": "video_files/clip.mp4", "mime_type": "video/mp4", "media_type": "video_file"})"),
                          kFile)
                     .at(0)
                     .items;
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].details().attachmentName, "files/IMG_1.jpg");
    EXPECT_EQ(items[0].text, "");
    EXPECT_FALSE(items[1].details().attachmentName);
    EXPECT_EQ(items[1].text, "[video file]");
}

TEST(Telegram, EmptyMediaMessagesGetPlaceholders) {
    auto items = telegram(withMessages(R"(
        {"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text": "",
         "file": "voice_messages/audio_1.ogg", "media_type": "voice_message"},
        {"type": "message", "date": "2025-05-03T20:01:00", "from": "Sam", "text": "",
         "media_type": "sticker"},
        {"type": "message", "date": "2025-05-03T20:02:00", "from": "Sam", "text": "hi",
         "media_type": "sticker"})"),
                          kFile)
                     .at(0)
                     .items;
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].text, "[voice message]");
    EXPECT_EQ(items[1].text, "[sticker]");
    EXPECT_EQ(items[2].text, "hi");
}

TEST(Telegram, UnusableElementsAreSkippedButCounted) {
    auto items = telegram(withMessages(R"(
        {"type": "message", "from": "Sam", "text": "no date"},
        {"type": "message", "date": "yesterday", "from": "Sam", "text": "bad date"},
        {"type": "message", "date": "2025-02-30T10:00:00", "from": "Sam", "text": "no such day"},
        {"date": "2025-05-03T20:00:00", "from": "Sam", "text": "no type"},
        {"type": "service", "date": "2025-05-03T20:00:00", "action": "pin_message"},
        "not an object",
        {"type": "message", "date": "2025-05-03 20:09", "text": "other ISO form, no sender"})"),
                          kFile)
                     .at(0)
                     .items;
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].position, 7);
    EXPECT_EQ(items[0].sender, "");
    EXPECT_EQ(items[0].date, *makeDate(2025, 5, 3, 20, 9, 0));
}

TEST(Telegram, DatesWithAZoneAreRefused) {
    EXPECT_EQ(errorOf(withMessages(R"({"type": "message", "date": "2025-05-03T20:00:00Z",
        "text": "x"})")),
              "No messages in this Telegram export.");
}

// Positions count on through the chats, so file and position name one message.
TEST(Telegram, WholeAccountDropsEmptyChatsAndKeepsTheirPlaces) {
    auto chats = telegram(R"({"about": "x", "chats": {"about": "y", "list": [
        {"name": "Sam Lee", "type": "personal_chat", "messages": [
            {"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text": "a"}]},
        {"name": "Empty", "type": "personal_chat", "messages": []},
        {"type": "private_group", "messages": [
            {"type": "message", "date": "2025-06-03T20:00:00", "from": "Kim", "text": "b"},
            {"type": "message", "date": "2025-06-03T20:01:00", "from": "Sam", "text": "c"}]}
    ]}})",
                          kFile);
    ASSERT_EQ(chats.size(), 2u);
    EXPECT_EQ(chats[0].name, "Sam Lee");
    EXPECT_EQ(chats[0].placeInList, 1);
    EXPECT_EQ(chats[1].name, "Telegram chat");
    EXPECT_EQ(chats[1].placeInList, 3);
    ASSERT_EQ(chats[1].items.size(), 2u);
    EXPECT_EQ(chats[0].items[0].position, 1);
    EXPECT_EQ(chats[1].items[0].position, 2);
    EXPECT_EQ(chats[1].items[1].position, 3);
}

TEST(Telegram, RefusalsSayWhatIsWrong) {
    EXPECT_EQ(errorOf("[1, 2]"), "Not a Telegram export.");
    EXPECT_EQ(errorOf(R"({"chats": {"list": {}}})"), "Not a Telegram export.");
    EXPECT_EQ(errorOf(R"({"chats": {"list": []}})"), "No chats in this Telegram export.");
    EXPECT_EQ(errorOf(R"({"chats": {"list": [{"name": "a", "messages": []}]}})"),
              "No messages in this Telegram export.");
    EXPECT_EQ(errorOf(withMessages("")), "No messages in this Telegram export.");
}

TEST(Telegram, DamagedJsonGivesAPlainSentence) {
    std::string whole = kSingleChat;
    for (std::string damaged : {whole.substr(0, whole.size() / 2), whole.substr(0, 60),
                                std::string(R"({"messages": [1,, 2]})"), std::string("")}) {
        std::string message = errorOf(damaged);
        EXPECT_EQ(message.rfind("The JSON text is damaged: ", 0), 0u) << message;
        EXPECT_EQ(message.back(), '.');
        EXPECT_EQ(message.find(".."), std::string::npos) << message;
    }
    EXPECT_EQ(
        errorOf(whole.substr(0, whole.size() / 2)),
        "The JSON text is damaged: it stops in the middle, so the file was probably cut short.");
    // Data nested deeper than any export: refused, not a deep recursion.
    std::string deep =
        R"({"messages": )" + std::string(100000, '[') + std::string(100000, ']') + "}";
    EXPECT_EQ(errorOf(deep), "The JSON text is damaged: its data is nested too deeply.");
    // Cut right after a closing bracket: the brackets no longer pair up.
    EXPECT_EQ(errorOf(whole.substr(0, whole.find("},") + 1)),
              "The JSON text is damaged: its brackets, commas or quote marks are out of place.");
}

TEST(Telegram, ParsesInPlaceWhenTheBufferHasPadding) {
    std::string json = kSingleChat;
    std::string buffer = json + std::string(simdjson::SIMDJSON_PADDING, '\0');
    auto chats =
        telegram(std::string_view(buffer.data(), json.size()), kFile, simdjson::SIMDJSON_PADDING);
    EXPECT_EQ(chats, telegram(json, kFile));
}

TEST(IsTelegram, RecognisesBothExportShapes) {
    EXPECT_TRUE(isTelegram(kSingleChat));
    EXPECT_TRUE(isTelegram(R"({"about": "x", "chats": {"list": []}})"));
    EXPECT_FALSE(isTelegram(R"({"type":"personal_chat", "messages": []})"));
    EXPECT_FALSE(isTelegram(R"({"participants": [], "messages": []})"));
}

TEST(IsTelegram, PrefixCutInsideACharacterIsRefused) {
    // "é" is two bytes; put its first byte at index 1999.
    std::string json = R"({"type": "personal_chat", "messages": [], "name": ")";
    json += std::string(1999 - json.size(), 'a') + "\u00e9\"}";
    ASSERT_EQ(static_cast<unsigned char>(json[1999]), 0xC3);
    EXPECT_FALSE(isTelegram(json));
    json.insert(0, " ");
    EXPECT_TRUE(isTelegram(json));
}

}  // namespace
}  // namespace kinfolio::Importer
