#include "importers/telegram.h"

#include <array>

#include "model/text.h"

namespace kinfolio::Importer {

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

}  // namespace kinfolio::Importer
