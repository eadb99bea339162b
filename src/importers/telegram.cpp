#include "importers/telegram.h"

#include <algorithm>
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

// What a message object says: each key's first value, strings only where a
// string is expected. Both readings fill it, and one function makes the item.
struct MessageFields {
    using Text = std::optional<std::string_view>;
    Text date, type, from, photo, file, mimeType, mediaType, action, actor, discardReason;
    std::optional<double> duration;
    std::string text;
};

constexpr std::array<std::pair<std::string_view, MessageFields::Text MessageFields::*>, 10>
    kStringKeys = {{{"date", &MessageFields::date},
                    {"type", &MessageFields::type},
                    {"from", &MessageFields::from},
                    {"photo", &MessageFields::photo},
                    {"file", &MessageFields::file},
                    {"mime_type", &MessageFields::mimeType},
                    {"media_type", &MessageFields::mediaType},
                    {"action", &MessageFields::action},
                    {"actor", &MessageFields::actor},
                    {"discard_reason", &MessageFields::discardReason}}};

// The message or call the fields make, none for anything else.
std::optional<Evidence> itemOf(MessageFields& f, const SharedText& fileID, int64_t position) {
    if (!f.date) return std::nullopt;
    auto when = messageDate(*f.date);
    if (!when) return std::nullopt;
    Evidence e;
    e.date = *when;
    e.fileID = fileID;
    e.position = position;
    if (f.type == "message") {
        e.sender = f.from.value_or("");
        e.text = std::move(f.text);
        if (f.photo)
            e.detailsForWriting().attachmentName = std::string(*f.photo);
        else if (f.file && f.mimeType == "image/jpeg")
            e.detailsForWriting().attachmentName = std::string(*f.file);
        if (e.text.empty() && !e.details().attachmentName && f.mediaType)
            e.text = "[" + replaceAll(*f.mediaType, "_", " ") + "]";
        return e;
    }
    if (f.type == "service" && f.action == "phone_call") {
        e.kind = ItemKind::call;
        e.sender = f.actor.value_or("");
        if (f.duration) e.detailsForWriting().duration = *f.duration;
        e.text = f.discardReason == "missed" ? "Missed call" : "Call";
        return e;
    }
    return std::nullopt;
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
        MessageFields f;
        for (auto [key, field] : kStringKeys)
            f.*field = stringMember(m, key);
        f.duration = numberMember(m, "duration_seconds");
        f.text = telegramText(member(m, "text"));
        if (auto e = itemOf(f, fileID, position)) items.push_back(std::move(*e));
    }
    return items;
}

// The same reading in one pass over the text, without a document tree: a
// whole-account export runs to hundreds of megabytes and its tree took twice
// that again. Objects are read field by field, the first of a repeated key
// counting, as in the tree. Anything the pass does not expect (a damaged
// text, trailing data, a layout other than Telegram's) gives none, and the
// tree reading then decides, with its own sentences for what is wrong.
namespace streamed {

namespace od = simdjson::ondemand;

// A string value, none for another type; an error otherwise.
simdjson::error_code stringOf(od::value v, std::optional<std::string_view>& out) {
    std::string_view text;
    auto error = v.get_string().get(text);
    if (error == simdjson::INCORRECT_TYPE) return simdjson::SUCCESS;
    if (!error) out = text;
    return error;
}

simdjson::error_code textOf(od::value v, std::string& out) {
    od::json_type type;
    if (auto error = v.type().get(type)) return error;
    if (type == od::json_type::string) {
        std::string_view text;
        if (auto error = v.get_string().get(text)) return error;
        out = text;
        return simdjson::SUCCESS;
    }
    if (type != od::json_type::array) return simdjson::SUCCESS;
    od::array parts;
    if (auto error = v.get_array().get(parts)) return error;
    for (auto part : parts) {
        od::value p;
        if (auto error = part.get(p)) return error;
        if (auto error = p.type().get(type)) return error;
        if (type == od::json_type::string) {
            std::string_view text;
            if (auto error = p.get_string().get(text)) return error;
            out += text;
        } else if (type == od::json_type::object) {
            od::object entity;
            if (auto error = p.get_object().get(entity)) return error;
            std::optional<std::string_view> text;
            bool seen = false;
            for (auto field : entity) {
                std::string_view key;
                if (auto error = field.unescaped_key().get(key)) return error;
                od::value value;
                if (auto error = field.value().get(value)) return error;
                if (key == "text" && !seen) {
                    seen = true;
                    if (auto error = stringOf(value, text)) return error;
                }
            }
            if (text) out += *text;
        }
    }
    return simdjson::SUCCESS;
}

simdjson::error_code fieldsOf(od::object m, MessageFields& f) {
    // Only the first of a repeated key counts, as in the tree.
    std::array<bool, kStringKeys.size()> seen{};
    bool seenText = false, seenDuration = false;
    for (auto field : m) {
        std::string_view key;
        if (auto error = field.unescaped_key().get(key)) return error;
        od::value v;
        if (auto error = field.value().get(v)) return error;
        simdjson::error_code error = simdjson::SUCCESS;
        auto known = std::find_if(kStringKeys.begin(), kStringKeys.end(),
                                  [&](const auto& k) { return k.first == key; });
        if (known != kStringKeys.end()) {
            auto i = static_cast<size_t>(known - kStringKeys.begin());
            if (!seen[i]) error = stringOf(v, f.*(known->second));
            seen[i] = true;
        } else if (key == "text" && !seenText) {
            seenText = true;
            error = textOf(v, f.text);
        } else if (key == "duration_seconds" && !seenDuration) {
            seenDuration = true;
            double seconds;
            error = v.get_double().get(seconds);
            if (error == simdjson::INCORRECT_TYPE)
                error = simdjson::SUCCESS;
            else if (!error)
                f.duration = seconds;
        }
        if (error) return error;
    }
    return simdjson::SUCCESS;
}

// Lets the mapped pages behind the reading go now and then: the items hold
// copies of what they need, and the export and its items should not be in
// memory together.
struct Release {
    od::document* doc = nullptr;
    MappedFile* mapped = nullptr;
    int64_t countdown = 0;
    void maybe() {
        if (!mapped || --countdown > 0) return;
        countdown = 4096;
        const char* at;
        if (!doc->current_location().get(at)) mapped->releaseBefore(at);
    }
};

// The items of one field's value `messages`, as chatItems() reads them.
simdjson::error_code messagesOf(od::value value, const SharedText& fileID, int64_t& position,
                                std::vector<Evidence>& items, Release& release) {
    od::array messages;
    if (auto error = value.get_array().get(messages)) return error;
    for (auto element : messages) {
        ++position;  // every element counts, skipped ones too
        release.maybe();
        od::value v;
        if (auto error = element.get(v)) return error;
        od::json_type type;
        if (auto error = v.type().get(type)) return error;
        if (type != od::json_type::object) continue;
        od::object m;
        if (auto error = v.get_object().get(m)) return error;
        MessageFields f;
        if (auto error = fieldsOf(m, f)) return error;
        if (auto e = itemOf(f, fileID, position)) items.push_back(std::move(*e));
    }
    return simdjson::SUCCESS;
}

struct Chat {
    std::optional<std::string_view> name;
    bool seenName = false;
    std::vector<Evidence> items;
    bool hasMessages = false;
};

// A chat object: its name and the items of its first "messages" array.
simdjson::error_code chatOf(od::object chat, const SharedText& fileID, int64_t& position, Chat& out,
                            Release& release) {
    for (auto field : chat) {
        std::string_view key;
        if (auto error = field.unescaped_key().get(key)) return error;
        od::value v;
        if (auto error = field.value().get(v)) return error;
        if (key == "name" && !out.seenName) {
            out.seenName = true;
            if (auto error = stringOf(v, out.name)) return error;
        } else if (key == "messages" && !out.hasMessages) {
            od::json_type type;
            if (auto error = v.type().get(type)) return error;
            if (type != od::json_type::array) return simdjson::INCORRECT_TYPE;  // the tree decides
            out.hasMessages = true;
            if (auto error = messagesOf(v, fileID, position, out.items, release)) return error;
        }
    }
    return simdjson::SUCCESS;
}

std::optional<std::vector<TelegramChat>> read(std::string_view data, const std::string& fileID,
                                              size_t slack, MappedFile* mapped) {
    if (data.starts_with("\xEF\xBB\xBF")) data.remove_prefix(3);
    simdjson::padded_string copy;
    simdjson::padded_string_view text(data.data(), data.size(), data.size() + slack);
    if (slack < simdjson::SIMDJSON_PADDING) {
        copy = simdjson::padded_string(data);
        text = copy;
    }
    od::parser parser;
    od::document doc;
    od::object top;
    if (parser.iterate(text).get(doc) || doc.get_object().get(top)) return std::nullopt;
    // Only a mapping read where it lies has pages to let go.
    Release release{&doc, copy.size() == 0 ? mapped : nullptr};

    const SharedText sharedID(fileID);
    int64_t position = 0;
    std::vector<TelegramChat> result;
    bool single = false, sawMessages = false, account = false, sawChats = false;
    std::optional<std::string_view> topName;
    bool seenTopName = false;
    std::vector<Evidence> topItems;
    for (auto field : top) {
        std::string_view key;
        od::value v;
        if (field.unescaped_key().get(key) || field.value().get(v)) return std::nullopt;
        if (key == "messages" && !sawMessages) {
            // A top-level "messages" is a single chat, whatever else is there;
            // a whole-account reading before it would be the tree's second
            // choice, so that case is left to the tree.
            sawMessages = true;
            od::json_type type;
            if (v.type().get(type)) return std::nullopt;
            if (type != od::json_type::array) continue;
            if (account) return std::nullopt;
            single = true;
            if (messagesOf(v, sharedID, position, topItems, release)) return std::nullopt;
        } else if (key == "name" && !seenTopName) {
            seenTopName = true;
            if (stringOf(v, topName)) return std::nullopt;
        } else if (key == "chats" && !sawChats && !single) {
            sawChats = true;
            od::object chats;
            if (v.get_object().get(chats)) return std::nullopt;
            bool sawList = false;
            for (auto chatsField : chats) {
                std::string_view chatsKey;
                od::value list;
                if (chatsField.unescaped_key().get(chatsKey) || chatsField.value().get(list))
                    return std::nullopt;
                if (chatsKey != "list" || sawList) continue;
                sawList = true;
                od::array elements;
                if (list.get_array().get(elements)) return std::nullopt;
                account = true;
                int place = 0;
                for (auto element : elements) {
                    ++place;
                    od::value e;
                    od::json_type type;
                    if (element.get(e) || e.type().get(type)) return std::nullopt;
                    if (type != od::json_type::object) continue;
                    od::object chatObject;
                    Chat chat;
                    if (e.get_object().get(chatObject) ||
                        chatOf(chatObject, sharedID, position, chat, release))
                        return std::nullopt;
                    if (chat.items.empty()) continue;
                    result.push_back(TelegramChat{std::string(chat.name.value_or("Telegram chat")),
                                                  std::move(chat.items), place});
                }
                if (place == 0) return std::nullopt;  // the tree says there are no chats
            }
            if (!sawList) return std::nullopt;
        }
    }
    // More after the end of the data: the tree has a sentence for that.
    const char* rest;
    if (doc.current_location().get(rest) != simdjson::OUT_OF_BOUNDS) return std::nullopt;
    if (single) {
        result.clear();
        if (!topItems.empty())
            result.push_back(TelegramChat{std::string(topName.value_or("Telegram chat")),
                                          std::move(topItems), 0});
    } else if (!account) {
        return std::nullopt;  // not a Telegram layout: the tree says so
    }
    // Nothing to show: the tree gives the reason (no messages, or a damage
    // that this pass stepped over, such as brackets nested thousands deep).
    if (result.empty()) return std::nullopt;
    return result;
}

}  // namespace streamed

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

std::vector<TelegramChat> telegram(std::string_view data, const std::string& fileID, size_t slack,
                                   MappedFile* mapped) {
    if (auto chats = streamed::read(data, fileID, slack, mapped)) return std::move(*chats);
    simdjson::dom::document document;
    return telegram(parseJson(document, data, slack), fileID);
}

}  // namespace kinfolio::Importer
