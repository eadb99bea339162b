#include "app/export_guides.h"

#include <algorithm>
#include <cctype>

namespace kinfolio {

namespace {

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

}  // namespace

const std::vector<ExportGuide>& exportGuides() {
    static const std::vector<ExportGuide> guides = {
        {"whatsapp-iphone",
         "WhatsApp on iPhone",
         {"Open WhatsApp and go into the chat with your partner.",
          "Tap your partner's name at the top of the chat.", "Scroll down and tap Export Chat.",
          "Choose Attach Media to include photos, or Without Media for the text only.",
          "Save the ZIP file to Files, or send it to yourself by e-mail or AirDrop."},
         "Put the ZIP file into your materials folder as it is. There is no need to unzip it."},
        {"whatsapp-android",
         "WhatsApp on Android",
         {"Open WhatsApp and go into the chat with your partner.",
          "Tap the three dots at the top right, then More, then Export chat.",
          "Choose Include media to add photos, or Without media for the text only.",
          "Save the file to your phone's storage or Google Drive, or e-mail it to yourself."},
         "Put the text file (and the ZIP file or the photos, if you included media) into your "
         "materials folder. Keep photos next to the chat file, so Kinfolio can match them."},
        {"telegram",
         "Telegram",
         {"Install Telegram Desktop on a computer and sign in. The phone app cannot export.",
          "Open the chat with your partner.",
          "Click the three dots at the top right and choose Export chat history.",
          "Tick Photos if you want them, and set the format to \u201cMachine-readable JSON\u201d.",
          "Click Export and wait until Telegram shows the finished folder."},
         "Copy the whole export folder (with result.json and its photos folder) into your "
         "materials folder. An HTML export cannot be read: export again as JSON."},
        {"messenger",
         "Messenger",
         {"On Facebook, open Settings & privacy, then Settings, then Accounts Centre.",
          "Choose Your information and permissions, then Download your information.",
          "Choose Download or transfer information, pick your Facebook profile and Some of your "
          "information, then tick Messages.",
          "Choose Download to device, set the date range, and set the format to JSON (not "
          "HTML).",
          "Start the request. When Meta e-mails you that it is ready, download the ZIP file and "
          "unzip it."},
         "Copy the unzipped download folder into your materials folder. Kinfolio finds the "
         "conversations under messages/inbox by itself."},
        {"instagram",
         "Instagram",
         {"In Instagram, open your profile, the menu, then Accounts Centre.",
          "Choose Your information and permissions, then Download your information.",
          "Choose Download or transfer information, pick your Instagram account and Some of your "
          "information, then tick Messages.",
          "Choose Download to device, set the date range, and set the format to JSON (not "
          "HTML).",
          "Start the request. When it is ready, download the ZIP file and unzip it."},
         "Copy the unzipped download folder into your materials folder. Kinfolio finds the "
         "conversations under your_instagram_activity/messages/inbox by itself."},
        {"line",
         "LINE",
         {"Open LINE and go into the chat with your partner.",
          "Open the chat menu (the three lines or the arrow at the top right) and choose "
          "Settings.",
          "Choose Export chat history and save or send the text file."},
         "Put the text file into your materials folder. LINE exports text only; add photos "
         "from the chat as separate files."},
        {"kakaotalk",
         "KakaoTalk",
         {"On your phone, open KakaoTalk and go into the chat with your partner.",
          "Tap the menu (\u2261) at the top right, then the settings gear at the bottom.",
          "Tap Export Chat (Save messages on some phones), then choose Save text only, or "
          "Save all messages to include photos.",
          "Save the file to your phone or e-mail it to yourself.",
          "On a Windows or Mac computer, open the chat in the KakaoTalk app instead, open its "
          "menu and choose Save Chat."},
         "Put the text file (from a Mac, the .csv file) into your materials folder as it is. "
         "If KakaoTalk gave you a ZIP file, unzip it into the folder; its photos are then read "
         "as photos of their own."},
        {"imessage",
         "iMessage (with Quillory)",
         {"On a Mac signed in to your Apple Account, open the Quillory Messages exporter.",
          "Choose the conversation with your partner and the dates you need.",
          "Export it. Quillory writes a folder with a PDF, messages.csv, an attachments folder "
          "and verification.txt."},
         "Copy the whole Quillory folder into your materials folder without renaming or "
         "removing files: Kinfolio recognises it by verification.txt."},
        {"spreadsheet",
         "Chat spreadsheet (CSV)",
         {"Save the messages as a CSV file, for example from a text-message backup app or a "
          "spreadsheet program.",
          "The first row must name the columns date, sender and text; an attachments column is "
          "optional.",
          "Write dates like 2025-06-14 09:15:00 so they cannot be misread."},
         "Put the .csv file into your materials folder."},
        {"email",
         "E-mail",
         {"In your e-mail program, open a message and save it as a file (often File, then Save "
          "As, or drag the message to a folder). This gives an .eml file.",
          "To save many messages at once, export the mailbox or folder as an .mbox file (for "
          "example Thunderbird's ImportExportTools, or Google Takeout for Gmail)."},
         "Put the .eml or .mbox files into your materials folder."},
    };
    return guides;
}

const ExportGuide* findGuide(const std::string& name) {
    std::string wanted = lower(name);
    if (wanted.empty()) return nullptr;
    const ExportGuide* prefixMatch = nullptr;
    int prefixMatches = 0;
    for (const auto& guide : exportGuides()) {
        if (guide.id == wanted || lower(guide.title) == wanted) return &guide;
        if (guide.id.starts_with(wanted)) {
            prefixMatch = &guide;
            ++prefixMatches;
        }
    }
    return prefixMatches == 1 ? prefixMatch : nullptr;
}

std::string guideText(const ExportGuide& guide) {
    std::string out = guide.title + "\n";
    for (size_t i = 0; i < guide.steps.size(); ++i)
        out += "  " + std::to_string(i + 1) + ". " + guide.steps[i] + "\n";
    out += "  " + guide.inFolder + "\n";
    return out;
}

}  // namespace kinfolio
