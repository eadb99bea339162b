#include "example/example_parts.h"
#include "example/zip_writer.h"
#include "model/calendar.h"
#include "model/json.h"

namespace kinfolio::ExampleFolder {

namespace {

constexpr const char* kMaya = kApplicant;
constexpr const char* kJonas = kPartner;

struct Line {
    Instant date;
    std::string sender;  // empty for a system line
    std::string text;
};

// Maya's iPhone chat with Jonas, from the first messages to the wedding plans.
std::vector<Line> iphoneChat() {
    return {
        {at(2024, 3, 16, 19, 2, 11), kJonas,
         "Hi Maya, it was so nice to meet you at the climbing wall today!"},
        {at(2024, 3, 16, 19, 5, 40), kMaya, "Hi Jonas! Same here. Same time next Saturday?"},
        {at(2024, 3, 23, 21, 14, 2), kJonas,
         "Thank you for dinner. I did not expect to laugh that much."},
        {at(2024, 4, 13, 8, 30, 0), kMaya, "Good morning 😊 Coffee before the wall?"},
        {at(2024, 4, 13, 8, 31, 12), kJonas, "Always. The usual place at 9:30"},
        {at(2024, 5, 18, 22, 47, 9), kJonas,
         "I told my parents about you today.\nMum wants to meet you.\nNo pressure!"},
        {at(2024, 5, 18, 22, 50, 31), kMaya, "I would love to meet her ❤️"},
        {at(2024, 6, 15, 18, 42, 10), kMaya,
         "\u200e<attached: 00000007-PHOTO-2024-06-15-18-42-10.png>"},
        {at(2024, 6, 15, 18, 43, 0), kMaya, "Best weekend. Brighton suits you"},
        {at(2024, 7, 20, 12, 5, 44), kJonas,
         "Flights to Bergen booked: 14 to 21 August. You will finally meet everyone."},
        {at(2024, 7, 20, 12, 9, 3), kMaya,
         "Eek! Excited and nervous: what do I bring your grandmother?"},
        {at(2024, 9, 14, 17, 20, 0), kJonas, "\u200eMissed voice call"},
        {at(2024, 9, 14, 17, 22, 16), kMaya, "Sorry, on the train. Calling you in 10"},
        {at(2024, 11, 30, 10, 1, 27), kMaya, "The landlord said yes to the flat on Elm Road!"},
        {at(2024, 11, 30, 10, 2, 2), kJonas, "Our first home together 🏡"},
        {at(2024, 12, 24, 23, 58, 40), kJonas,
         "Merry Christmas, my love. Thank you for this year."},
        {at(2025, 1, 18, 9, 12, 5), kMaya,
         "Moving van at 8 tomorrow. I have packed 31 boxes and one of them is just your climbing "
         "shoes"},
        {at(2025, 2, 14, 20, 3, 55), kJonas,
         "\u200e<attached: 00000015-PHOTO-2025-02-14-20-03-55.png>"},
        {at(2025, 2, 14, 20, 4, 30), kJonas, "Still can't believe you said yes 💍"},
        {at(2025, 2, 14, 20, 6, 1), kMaya, "I'd say yes again: every single time"},
        {at(2025, 3, 22, 15, 45, 18), kMaya,
         "Registry office confirmed for 21 June. I've sent the form to your email too"},
        {at(2025, 4, 19, 11, 30, 0), kJonas,
         "Visa checklist: bank statements, tenancy, photos. We have most of it already"},
    };
}

std::string whatsAppText(const std::vector<Line>& lines, bool iphone) {
    std::string out;
    for (const auto& l : lines) {
        std::string prefix = iphone ? "[" + Calendar::format(l.date, "dd/MM/yyyy, HH:mm:ss") + "] "
                                    : Calendar::format(l.date, "dd/MM/yyyy, HH:mm") + " - ";
        out += prefix + (l.sender.empty() ? "" : l.sender + ": ") + l.text + "\n";
    }
    return out;
}

// Jonas's Android chat with Maya's mother.
std::vector<Line> androidChat() {
    return {
        {at(2024, 8, 25, 19, 0), "",
         "Messages and calls are end-to-end encrypted. No one outside of this chat, not even "
         "WhatsApp, can read or listen to them. Tap to learn more."},
        {at(2024, 8, 25, 19, 0), "Grace Okafor",
         "Jonas, this is Maya's mum. She gave me your number, I hope that is all right!"},
        {at(2024, 8, 25, 19, 6), kJonas, "Hello Grace, of course! Lovely to hear from you."},
        {at(2024, 10, 5, 14, 22), "Grace Okafor",
         "Thank you both for Sunday lunch. The lamb was perfect"},
        {at(2024, 10, 5, 14, 40), kJonas, "<Media omitted>"},
        {at(2024, 12, 26, 11, 3), "Grace Okafor",
         "Happy Boxing Day to you two! Come for tea on Saturday?"},
        {at(2025, 2, 15, 9, 48), "Grace Okafor",
         "Maya just called me!!! Congratulations 🎉\nWelcome to the family, Jonas."},
        {at(2025, 2, 15, 9, 55), kJonas, "Thank you Grace, that means a lot to me."},
        {at(2025, 3, 29, 16, 10), "Grace Okafor",
         "I've booked the restaurant for after the registry office: 21 June, table for 14."},
    };
}

Json telegramMessage(int id, Instant date, const char* from, Json text) {
    Json m = Json::object();
    m["id"] = id;
    m["type"] = "message";
    m["date"] = Calendar::format(date, "yyyy-MM-dd'T'HH:mm:ss");
    m["date_unixtime"] = std::to_string(static_cast<long long>(unixFromInstant(date)));
    m["from"] = from;
    m["from_id"] = std::string(from) == kMaya ? "user5120447731" : "user6034519902";
    m["text"] = text;
    Json entities = Json::array();
    if (text.is_string()) {
        entities.push_back({{"type", "plain"}, {"text", text}});
    } else {
        for (const auto& part : text)
            entities.push_back(part.is_string() ? Json{{"type", "plain"}, {"text", part}} : part);
    }
    m["text_entities"] = entities;
    return m;
}

Json telegramCall(int id, Instant date, const char* actor, int seconds, const char* reason) {
    Json m = Json::object();
    m["id"] = id;
    m["type"] = "service";
    m["date"] = Calendar::format(date, "yyyy-MM-dd'T'HH:mm:ss");
    m["date_unixtime"] = std::to_string(static_cast<long long>(unixFromInstant(date)));
    m["actor"] = actor;
    m["actor_id"] = std::string(actor) == kMaya ? "user5120447731" : "user6034519902";
    m["action"] = "phone_call";
    if (seconds > 0) m["duration_seconds"] = seconds;
    m["discard_reason"] = reason;
    m["text"] = "";
    m["text_entities"] = Json::array();
    return m;
}

// Meta writes every byte of a UTF-8 character as its own \u00XX escape.
std::string metaSpelling(const std::string& utf8) {
    std::string out;
    for (unsigned char c : utf8) {
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

struct MetaMessage {
    MetaMessage(Instant utc, const char* sender, std::string content, int callSeconds = -1)
        : utc(utc), sender(sender), content(std::move(content)), callSeconds(callSeconds) {}
    Instant utc;  // a true instant: Meta stores milliseconds since 1970 in UTC
    const char* sender;
    std::string content;
    int callSeconds;  // a call when not negative
};

std::string metaFile(const std::string& title, const std::string& threadPath,
                     std::vector<MetaMessage> messages) {
    Json root = Json::object();
    root["participants"] =
        Json::array({{{"name", metaSpelling(kJonas)}}, {{"name", metaSpelling(kMaya)}}});
    Json list = Json::array();
    // Newest first, as Meta writes them.
    for (auto it = messages.rbegin(); it != messages.rend(); ++it) {
        Json m = Json::object();
        m["sender_name"] = metaSpelling(it->sender);
        m["timestamp_ms"] = static_cast<long long>(unixFromInstant(it->utc)) * 1000;
        if (!it->content.empty()) m["content"] = metaSpelling(it->content);
        if (it->callSeconds >= 0) m["call_duration"] = it->callSeconds;
        m["is_geoblocked_for_viewer"] = false;
        list.push_back(m);
    }
    root["messages"] = list;
    root["title"] = metaSpelling(title);
    root["is_still_participant"] = true;
    root["thread_path"] = threadPath;
    root["magic_words"] = Json::array();
    return root.dump(2, ' ', /*ensure_ascii=*/true) + "\n";
}

}  // namespace

void addWhatsApp(Files& out) {
    std::vector<ZipWriter::Entry> entries = {
        {"_chat.txt", whatsAppText(iphoneChat(), true), true},
        {"00000007-PHOTO-2024-06-15-18-42-10.png", photo(0), false},
        {"00000015-PHOTO-2025-02-14-20-03-55.png", photo(1), false},
    };
    out.emplace_back("WhatsApp Chat - Jonas Berg.zip", ZipWriter::archive(entries));
    out.emplace_back("WhatsApp Chat with Grace Okafor.txt", whatsAppText(androidChat(), false));
}

void addTelegram(Files& out) {
    const char* photoPath = "photos/photo_1@16-08-2024_20-15-07.png";
    Json messages = Json::array({
        telegramMessage(20001, at(2024, 8, 14, 6, 40, 12), kMaya,
                        "Boarding now ✈️ see you in Bergen!"),
        telegramMessage(
            20002, at(2024, 8, 14, 6, 41, 0), kJonas,
            Json::array({"Safe flight! ", {{"type", "bold"}, {"text", "Mum has baked a cake"}}})),
        telegramCall(20003, at(2024, 8, 14, 13, 5, 30), kJonas, 0, "missed"),
        telegramMessage(20004, at(2024, 8, 16, 20, 15, 7), kJonas, ""),
        telegramMessage(20005, at(2024, 8, 16, 20, 16, 2), kMaya,
                        "Your grandmother taught me to knit.\nI have made one very crooked row."),
        telegramCall(20006, at(2024, 9, 2, 21, 30, 0), kMaya, 2460, "hangup"),
        telegramMessage(20007, at(2024, 10, 12, 8, 5, 45), kJonas, ""),
        telegramMessage(20008, at(2024, 11, 9, 18, 20, 3), kMaya,
                        "Found the notebook from Bergen, reading all the recipes again"),
    });
    messages[3]["photo"] = photoPath;
    messages[3]["width"] = 640;
    messages[3]["height"] = 480;
    messages[6]["media_type"] = "voice_message";
    messages[6]["file"] = "voice_messages/audio_1@12-10-2024_08-05-45.ogg";
    messages[6]["duration_seconds"] = 14;

    Json chat = Json::object();
    chat["name"] = kMaya;
    chat["type"] = "personal_chat";
    chat["id"] = 5120447731LL;
    chat["messages"] = messages;
    Json saved = Json::object();
    saved["type"] = "saved_messages";
    saved["id"] = 6034519902LL;
    saved["messages"] = Json::array();

    Json root = Json::object();
    root["about"] =
        "Here is the data you requested. Remember: Telegram is ad free, it doesn't use your data "
        "for ad targeting and doesn't sell it to others.";
    root["chats"] = {{"about", "This page lists all chats from this export."},
                     {"list", Json::array({chat, saved})}};
    // The desktop app indents with one space.
    out.emplace_back("Telegram Export 2025-04-20/result.json", root.dump(1) + "\n");
    out.emplace_back(std::string("Telegram Export 2025-04-20/") + photoPath, photo(3));
}

void addMeta(Files& out) {
    const std::string messengerThread = "jonasberg_10158912345";
    const std::string messengerDir =
        "facebook-mayaokafor-2025-04-20/your_facebook_activity/messages/inbox/" + messengerThread;
    out.emplace_back(
        messengerDir + "/message_1.json",
        metaFile(
            kJonas, "inbox/" + messengerThread,
            {
                {at(2024, 3, 19, 20, 11, 4), kJonas,
                 "Found you on here! The climbing guy from Saturday :)"},
                {at(2024, 3, 19, 20, 30, 51), kMaya, "Ha, hello climbing guy. Café on Thursday?"},
                {at(2024, 4, 28, 18, 2, 0), kMaya, "Maya started a video chat.", 1315},
                {at(2024, 6, 2, 11, 45, 22), kJonas, "Jonas started an audio call.", 0},
                {at(2024, 6, 2, 11, 47, 5), kJonas,
                 "Call you back after the match, it's too loud here"},
            }));
    const std::string instagramThread = "jonas.berg_17841400234567";
    const std::string instagramDir =
        "instagram-mayaokafor-2025-04-20/your_instagram_activity/messages/inbox/" + instagramThread;
    out.emplace_back(
        instagramDir + "/message_1.json",
        metaFile(kJonas, "inbox/" + instagramThread,
                 {
                     {at(2024, 7, 6, 9, 15, 0), kJonas,
                      "This reel is literally us trying to put up a tent 😂"},
                     {at(2024, 7, 6, 9, 18, 33), kMaya, "Stop. We were MUCH worse than that"},
                     {at(2024, 12, 31, 23, 59, 30), kMaya,
                      "Happy New Year from the other side of the room 🎆"},
                     {at(2025, 1, 25, 16, 2, 10), kJonas,
                      "Unpacked the last box. The flat finally feels like ours."},
                 }));
}

void addLine(Files& out) {
    // LINE during the trip to Japan: day headers, tab-separated lines, a
    // quoted multi-line message and the call notices.
    out.emplace_back(
        "[LINE] Chat with Jonas Berg.txt",
        "[LINE] Chat history with Jonas Berg\n"
        "Saved on: 2025/04/20 21:14\n"
        "\n"
        "Sat, 2024/10/19\n"
        "07:55\tJonas Berg\tLanded in Osaka! Train to Kyoto in 20 min\n"
        "08:02\tMaya Okafor\t\"Welcome to Japan!\n"
        "Meet you at the central exit. I'm the one with the umbrella.\"\n"
        "21:40\tMaya Okafor\t\u260e Call time 0:32:15\n"
        "\n"
        "Mon, 2024/10/21\n"
        "12:30\tJonas Berg\tShrine at 3? Then the tofu place you found\n"
        "12:31\tMaya Okafor\tYes!! 🙏\n"
        "19:05\tJonas Berg\t\u260e Missed call\n"
        "\n"
        "Thu, 2024/10/24\n"
        "16:45\tMaya Okafor\tSafe flight home. Two weeks until I'm back, I'm counting\n");
}

}  // namespace kinfolio::ExampleFolder
