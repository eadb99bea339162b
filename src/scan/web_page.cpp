#include <filesystem>

#include "model/text.h"
#include "scan/readers.h"

namespace kinfolio::Scanner {

void readWebPage(ScanContext& ctx, Record& html, std::string_view bytes) {
    std::string text = repairUtf8(bytes.substr(0, 16000));
    // A chat's page of a Telegram export does not name Telegram, but its
    // layout has Telegram's class names.
    std::string head = prefixCodePoints(text, 4000);
    if (head.find("Telegram") != std::string::npos ||
        (head.find("\"page_wrap\"") != std::string::npos &&
         head.find("\"history\"") != std::string::npos))
        return ctx.skip(html.path,
                        "Telegram HTML export. Export the chat again and choose "
                        "\u201cMachine-readable JSON\u201d.");
    if (startsWith(std::filesystem::path(html.path).filename().string(), "message_"))
        return ctx.skip(html.path,
                        "Messenger/Instagram HTML download. Request it again and choose the "
                        "JSON format.");
    ctx.skip(html.path, "Web page; Kinfolio does not read HTML.");
}

}  // namespace kinfolio::Scanner
