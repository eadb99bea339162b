#include "importers/telegram.h"

#include <array>

#include "importers/dates.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

int digits(std::string_view s, size_t at, size_t count) {
    int value = 0;
    for (size_t i = at; i < at + count; ++i) {
        if (s[i] < '0' || s[i] > '9') return -1;
        value = value * 10 + (s[i] - '0');
    }
    return value;
}

// Telegram writes every date as yyyy-MM-ddTHH:mm:ss. Reading that shape
// directly gives what the pattern list gives, without trying four ICU
// patterns for each of the hundreds of thousands of messages an account
// export can hold; anything else goes through the pattern list.
std::optional<Instant> messageDate(std::string_view s) {
    if (s.size() == 19 && s[4] == '-' && s[7] == '-' && s[10] == 'T' && s[13] == ':' &&
        s[16] == ':') {
        int year = digits(s, 0, 4), month = digits(s, 5, 2), day = digits(s, 8, 2);
        int hour = digits(s, 11, 2), minute = digits(s, 14, 2), second = digits(s, 17, 2);
        if (year >= 1 && month >= 0 && day >= 0 && hour >= 0 && hour < 24 && minute >= 0 &&
            minute < 60 && second >= 0 && second < 60)
            return Calendar::makeDate(year, month, day, hour, minute, second);
    }
    return date(s, DateOrder::dayFirst);
}

Evidence item(ItemKind kind, Instant when, const SharedText& fileID, int64_t position) {
    Evidence e;
    e.kind = kind;
    e.date = when;
    e.fileID = fileID;
    e.position = position;
    return e;
}

Evidence message(JsonObject m, Instant when, const SharedText& fileID, int64_t position) {
    Evidence e = item(ItemKind::message, when, fileID, position);
    e.sender = stringMember(m, "from").value_or("");
    e.text = telegramText(member(m, "text"));
    if (auto photo = stringMember(m, "photo")) {
        e.detailsForWriting().attachmentName = std::string(*photo);
    } else if (auto file = stringMember(m, "file");
               file && stringMember(m, "mime_type") == "image/jpeg") {
        e.detailsForWriting().attachmentName = std::string(*file);
    }
    if (e.text.empty() && !e.details().attachmentName)
        if (auto media = stringMember(m, "media_type"))
            e.text = "[" + replaceAll(*media, "_", " ") + "]";
    return e;
}

Evidence call(JsonObject m, Instant when, const SharedText& fileID, int64_t position) {
    Evidence e = item(ItemKind::call, when, fileID, position);
    e.sender = stringMember(m, "actor").value_or("");
    if (auto seconds = numberMember(m, "duration_seconds"))
        e.detailsForWriting().duration = *seconds;
    e.text = stringMember(m, "discard_reason") == "missed" ? "Missed call" : "Call";
    return e;
}

// `position` counts on from the chats before this one: an item's id is its
// file and position, and the chats of a whole-account export share one file.
std::vector<Evidence> chatItems(JsonObject chat, const SharedText& fileID, int64_t& position) {
    std::vector<Evidence> items;
    auto messages = arrayMember(chat, "messages");
    if (!messages) return items;
    items.reserve(messages->size());
    for (JsonValue element : *messages) {
        ++position;  // every element counts, skipped ones too
        JsonObject m;
        if (element.get_object().get(m)) continue;
        auto written = stringMember(m, "date");
        if (!written) continue;
        auto when = messageDate(*written);
        if (!when) continue;
        auto type = stringMember(m, "type");
        if (type == "message")
            items.push_back(message(m, *when, fileID, position));
        else if (type == "service" && stringMember(m, "action") == "phone_call")
            items.push_back(call(m, *when, fileID, position));
    }
    return items;
}

}  // namespace

bool isTelegram(std::string_view data) {
    if (data.size() > 299'999'999) return false;
    std::string_view prefix = data.substr(0, 2000);
    // A cut inside a multi-byte character counts as a refusal too.
    if (!isValidUtf8(prefix)) return false;
    auto has = [&](std::string_view s) { return prefix.find(s) != std::string_view::npos; };
    static constexpr std::array<std::string_view, 5> kChatTypes = {
        "\"type\": \"personal_chat\"", "\"type\": \"private_group\"",
        "\"type\": \"private_supergroup\"", "\"type\": \"saved_messages\"",
        "\"type\": \"bot_chat\""};
    if (has("\"messages\""))
        for (auto type : kChatTypes)
            if (has(type)) return true;
    return has("\"chats\"") && has("\"list\"");
}

std::string telegramText(std::optional<JsonValue> value) {
    if (!value) return {};
    std::string_view text;
    if (!value->get_string().get(text)) return std::string(text);
    JsonArray parts;
    if (value->get_array().get(parts)) return {};
    std::string joined;
    for (JsonValue part : parts) {
        JsonObject entity;
        if (!part.get_string().get(text))
            joined += text;
        else if (!part.get_object().get(entity))
            joined += stringMember(entity, "text").value_or("");
    }
    return joined;
}

std::vector<TelegramChat> telegram(JsonValue root, const std::string& fileID) {
    JsonObject top;
    if (root.get_object().get(top)) throw EvidenceError::invalid("Not a Telegram export.");

    struct Listed {
        JsonObject chat;
        int place;
    };
    std::vector<Listed> listed;
    if (arrayMember(top, "messages")) {
        listed.push_back({top, 0});
    } else if (auto chats = objectMember(top, "chats"); chats && arrayMember(*chats, "list")) {
        auto list = *arrayMember(*chats, "list");
        if (list.size() == 0) throw EvidenceError::invalid("No chats in this Telegram export.");
        int place = 0;
        for (JsonValue element : list) {
            ++place;
            JsonObject chat;
            if (!element.get_object().get(chat)) listed.push_back({chat, place});
        }
    } else {
        throw EvidenceError::invalid("Not a Telegram export.");
    }

    std::vector<TelegramChat> result;
    const SharedText sharedID(fileID);
    int64_t position = 0;
    for (const auto& [chat, place] : listed) {
        auto items = chatItems(chat, sharedID, position);
        if (items.empty()) continue;
        std::string name(stringMember(chat, "name").value_or("Telegram chat"));
        result.push_back(TelegramChat{std::move(name), std::move(items), place});
    }
    if (result.empty()) throw EvidenceError::invalid("No messages in this Telegram export.");
    return result;
}

std::vector<TelegramChat> telegram(std::string_view data, const std::string& fileID, size_t slack) {
    simdjson::dom::document document;
    return telegram(parseJson(document, data, slack), fileID);
}

}  // namespace kinfolio::Importer
