#include "importers/meta.h"

#include "model/text.h"

namespace kinfolio::Importer {

namespace {

// A number far outside the years 1 to 9999 is damage, not a time: kept, it
// would be shown without a date and stretch the list of months without
// messages over thousands of years.
bool isCalendarTime(double milliseconds) {
    constexpr double kFirst = -62135596800000.0;  // 0001-01-01T00:00:00Z
    constexpr double kLast = 253402300799999.0;   // 9999-12-31T23:59:59.999Z
    return milliseconds >= kFirst && milliseconds <= kLast;
}

Instant wallClock(double milliseconds, const icu::TimeZone& zone) {
    int32_t raw = 0, dst = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone.getOffset(milliseconds, false, raw, dst, status);
    if (U_FAILURE(status)) raw = dst = 0;
    return instantFromUnix((milliseconds + raw + dst) / 1000.0);
}

std::string repaired(JsonObject object, std::string_view key) {
    return fixMeta(stringMember(object, key).value_or(""));
}

Evidence item(JsonObject m, Instant when, const SharedText& fileID, int64_t position) {
    Evidence e;
    e.date = when;
    e.fileID = fileID;
    e.position = position;
    e.sender = repaired(m, "sender_name");
    e.text = repaired(m, "content");
    if (auto seconds = numberMember(m, "call_duration")) {
        // The content ("Alex started a video chat.") says less than this.
        e.kind = ItemKind::call;
        e.detailsForWriting().duration = *seconds;
        e.text = *seconds > 0 ? "Call" : "Missed call";
        return e;
    }
    e.kind = ItemKind::message;
    JsonObject first;
    if (auto photos = arrayMember(m, "photos");
        photos && photos->size() > 0 && !photos->at(0).get_object().get(first))
        if (auto uri = stringMember(first, "uri"))
            e.detailsForWriting().attachmentName = std::string(*uri);
    if (e.text.empty() && !e.details().attachmentName) {
        if (member(m, "videos"))
            e.text = "[video]";
        else if (member(m, "audio_files"))
            e.text = "[voice message]";
        else if (member(m, "sticker"))
            e.text = "[sticker]";
    }
    return e;
}

}  // namespace

bool isMeta(std::string_view data) {
    std::string_view prefix = data.substr(0, 3000);
    if (!isValidUtf8(prefix)) return false;
    auto has = [&](std::string_view s) { return prefix.find(s) != std::string_view::npos; };
    return has("\"participants\"") && (has("\"messages\"") || has("\"sender_name\""));
}

std::string fixMeta(std::string_view text) {
    // Every scalar up to U+00FF is one byte below 0x80 or a two-byte
    // sequence led by 0xC2 or 0xC3; any other lead byte is a scalar above
    // U+00FF, and such text is left as it is.
    std::string bytes;
    bytes.reserve(text.size());
    bool high = false;
    for (size_t i = 0; i < text.size(); ++i) {
        auto b = static_cast<unsigned char>(text[i]);
        if (b < 0x80) {
            bytes += static_cast<char>(b);
            continue;
        }
        if ((b != 0xC2 && b != 0xC3) || i + 1 == text.size()) return std::string(text);
        auto next = static_cast<unsigned char>(text[i + 1]);
        if ((next & 0xC0) != 0x80) return std::string(text);
        bytes += static_cast<char>(((b & 0x1F) << 6) | (next & 0x3F));
        high = true;
        ++i;
    }
    if (!high || !isValidUtf8(bytes)) return std::string(text);
    return bytes;
}

MetaChat meta(JsonValue root, const std::string& fileID, const icu::TimeZone& zone) {
    JsonObject top;
    std::optional<JsonArray> messages;
    if (!root.get_object().get(top)) messages = arrayMember(top, "messages");
    if (!messages) throw EvidenceError::invalid("Not a Messenger or Instagram message file.");

    MetaChat chat;
    const SharedText sharedID(fileID);
    if (auto participants = arrayMember(top, "participants"))
        for (JsonValue p : *participants) {
            JsonObject person;
            if (p.get_object().get(person)) continue;
            if (auto name = stringMember(person, "name"))
                chat.participants.push_back(fixMeta(*name));
        }

    chat.items.reserve(messages->size());
    int64_t position = 0;
    for (JsonValue element : *messages) {
        ++position;
        JsonObject m;
        if (element.get_object().get(m)) continue;
        auto milliseconds = numberMember(m, "timestamp_ms");
        if (!milliseconds || !isCalendarTime(*milliseconds)) continue;
        chat.items.push_back(item(m, wallClock(*milliseconds, zone), sharedID, position));
    }

    if (auto title = stringMember(top, "title")) {
        chat.title = fixMeta(*title);
    } else {
        chat.title = join(chat.participants, " & ");
    }
    return chat;
}

MetaChat meta(std::string_view data, const std::string& fileID, const icu::TimeZone& zone,
              size_t slack) {
    simdjson::dom::document document;
    return meta(parseJson(document, data, slack), fileID, zone);
}

}  // namespace kinfolio::Importer
