#include "importers/telegram.h"

#include <gtest/gtest.h>

#include <random>

#include "model/text.h"
#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using testing::itemLines;

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

std::string errorOf(const std::string& json) {
    return testing::errorOf([&] { telegram(json, kFile); });
}

TEST(Telegram, EachKindOfMessageBecomesItsItem) {
    const std::tuple<const char*, std::string, std::vector<std::string>> cases[] = {
        {"a missed call, and a call without length or caller",
         R"({"type": "service", "date": "2025-05-04T21:00:00", "actor": "Sam",
             "action": "phone_call", "discard_reason": "missed"},
            {"type": "service", "date": "2025-05-04T21:05:00", "action": "phone_call",
             "discard_reason": "hangup"})",
         {"1 2025-05-04 21:00:00 Sam: Missed call (call)", "2 2025-05-04 21:05:00 : Call (call)"}},
        {"a text array joins strings and entity texts",
         R"({"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text":
             ["So jealous. ", {"type": "bold", "text": "Send photos"}, 42, {"type": "link"}]})",
         {"1 2025-05-03 20:00:00 Sam: So jealous. Send photos"}},
        {"a photo, and only JPEG files count as photos",
         R"({"type": "message", "date": "2025-05-03T20:07:00", "from": "Sam",
             "photo": "photos/photo_1@03-05-2025_20-07-00.jpg", "media_type": "photo", "text": ""},
            {"type": "message", "date": "2025-05-03T20:08:00", "from": "Sam", "text": "",
             "file": "files/IMG_1.jpg", "mime_type": "image/jpeg"},
            {"type": "message", "date": "2025-05-03T20:09:00", "from": "Sam", "text": "",
             "file": "video_files/clip.mp4", "mime_type": "video/mp4", "media_type": "video_file"})",
         {"1 2025-05-03 20:07:00 Sam:  [photos/photo_1@03-05-2025_20-07-00.jpg]",
          "2 2025-05-03 20:08:00 Sam:  [files/IMG_1.jpg]",
          "3 2025-05-03 20:09:00 Sam: [video file]"}},
        {"empty media messages get placeholders",
         R"({"type": "message", "date": "2025-05-03T20:00:00", "from": "Sam", "text": "",
             "file": "voice_messages/audio_1.ogg", "media_type": "voice_message"},
            {"type": "message", "date": "2025-05-03T20:01:00", "from": "Sam", "text": "",
             "media_type": "sticker"},
            {"type": "message", "date": "2025-05-03T20:02:00", "from": "Sam", "text": "hi",
             "media_type": "sticker"})",
         {"1 2025-05-03 20:00:00 Sam: [voice message]", "2 2025-05-03 20:01:00 Sam: [sticker]",
          "3 2025-05-03 20:02:00 Sam: hi"}},
        {"unusable elements are skipped but counted",
         R"({"type": "message", "from": "Sam", "text": "no date"},
            {"type": "message", "date": "yesterday", "from": "Sam", "text": "bad date"},
            {"type": "message", "date": "2025-02-30T10:00:00", "from": "Sam", "text": "no day"},
            {"date": "2025-05-03T20:00:00", "from": "Sam", "text": "no type"},
            {"type": "service", "date": "2025-05-03T20:00:00", "action": "pin_message"},
            "not an object",
            {"type": "message", "date": "2025-05-03 20:09", "text": "other ISO form, no sender"})",
         {"7 2025-05-03 20:09:00 note: other ISO form, no sender"}},
    };
    for (const auto& [name, messages, items] : cases) {
        SCOPED_TRACE(name);
        auto chats = telegram(withMessages(messages), kFile);
        ASSERT_EQ(chats.size(), 1u);
        EXPECT_EQ(itemLines(chats[0].items), items);
    }
}

TEST(Telegram, RefusalsSayWhatIsWrong) {
    const std::pair<std::string, std::string> cases[] = {
        {"[1, 2]", "Not a Telegram export."},
        {R"({"chats": {"list": {}}})", "Not a Telegram export."},
        {R"({"chats": {"list": []}})", "No chats in this Telegram export."},
        {R"({"chats": {"list": [{"name": "a", "messages": []}]}})",
         "No messages in this Telegram export."},
        {withMessages(""), "No messages in this Telegram export."},
        // A date that carries its own zone is no written time.
        {withMessages(R"({"type": "message", "date": "2025-05-03T20:00:00Z", "text": "x"})"),
         "No messages in this Telegram export."},
    };
    for (const auto& [json, message] : cases)
        EXPECT_EQ(errorOf(json), message) << json;
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

// The export is read in one pass without a tree; whatever it holds, the
// result (or the refusal) must be the tree's.
TEST(Telegram, TheOnePassReadingEqualsTheTree) {
    auto both = [](const std::string& json) {
        auto reading = [](auto read) {
            std::string shown;
            std::string error = testing::errorOf([&] {
                for (const auto& chat : read()) {
                    shown += chat.name + " #" + std::to_string(chat.placeInList) + "\n";
                    for (const auto& line : itemLines(chat.items))
                        shown += line + "\n";
                }
            });
            return error == "(no error)" ? shown : error;
        };
        std::string streamed = reading([&] { return telegram(json, kFile); });
        std::string tree = reading([&] {
            simdjson::dom::document doc;
            return telegram(parseJson(doc, json), kFile);
        });
        EXPECT_EQ(streamed, tree) << json;
    };
    const std::string message = R"({"type": "message", "date": "2025-05-03T20:00:00", "from": "S",
                                     "text": "a"})";
    const std::string layouts[] = {
        kSingleChat,
        R"({"messages": [)" + message + R"(], "name": "after the messages"})",
        R"({"name": 7, "name": "second name", "messages": [)" + message + "]}",
        R"({"messages": 3, "messages": [)" + message + "]}",
        R"({"chats": {"list": [{"messages": [)" + message + R"(]}]}, "messages": [)" + message +
            "]}",
        R"({"messages": [)" + message + R"(], "chats": {"list": [{"messages": []}]}})",
        R"({"chats": {"list": [], "list": [{"messages": [)" + message + "]}]}}",
        R"({"chats": {"list": [{"messages": {"a": 1}, "name": "x"}]}})",
        R"({"chats": [], "chats": {"list": []}})",
        R"({"messages": [)" + message + "]} trailing",
        R"({"messages": [{"type": "message", "type": "service", "date": "2025-05-03T20:00:00",
            "date": "x", "text": ["a", {"text": 5, "text": "b"}, {"text": "c"}], "text": "d",
            "from": null, "from": "late"}]})",
        R"({"messages": [{"type": "service", "action": "phone_call", "duration_seconds": "9",
            "duration_seconds": 4, "date": "2025-05-03T20:00:00", "actor": "Kim"}]})",
        "\xEF\xBB\xBF" + std::string(kSingleChat),
        R"({"messages": [)" + message + ", \"\xC3\"]}",
    };
    for (const auto& json : layouts)
        both(json);

    // Random messages: fields in any order, repeated, of the wrong type.
    std::mt19937 random(7);
    // One key and one value per line of each list.
    const auto keys = textLines(
        "type\ndate\nfrom\ntext\nphoto\nfile\nmime_type\nmedia_type\naction\nactor\n"
        "duration_seconds\ndiscard_reason");
    const auto values = textLines(
        "\"message\"\n\"service\"\n\"2025-05-03T20:00:00\"\n\"phone_call\"\n\"image/jpeg\"\n"
        "\"missed\"\n\"x.jpg\"\n12\nnull\n[\"a\", {\"text\": \"b\"}]\n{\"text\": \"c\"}\n[]");
    for (int round = 0; round < 200; ++round) {
        std::string messages;
        for (int m = 0; m < 6; ++m) {
            // Mostly readable messages, so that the rest varies what is read.
            messages += random() % 2 ? R"({"type": "message", "date": "2025-05-03T20:00:00")"
                                     : R"({"date": "2025-05-03T20:00:00", "type": "service",
                                          "action": "phone_call")";
            for (int f = 0, n = static_cast<int>(random() % 9); f < n; ++f)
                messages += ", \"" + std::string(keys[random() % keys.size()]) +
                            "\": " + std::string(values[random() % values.size()]);
            messages += "}";
            if (m < 5) messages += ", ";
        }
        both(round % 2
                 ? withMessages(messages)
                 : R"({"chats": {"list": [{"name": "a", "messages": [)" + messages + "]}, 5]}}");
    }
}

}  // namespace
}  // namespace kinfolio::Importer
