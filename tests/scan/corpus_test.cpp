#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::shown;

const std::string kCorpus = KINFOLIO_CORPUS;

bool holdsText(const ScanResult& scan, const std::string& source, const std::string& text) {
    for (const Source& s : scan.sources)
        if (shown(s) == source)
            return std::any_of(s.items.begin(), s.items.end(), [&](const Evidence& e) {
                return e.text.find(text) != std::string::npos;
            });
    return false;
}

// Files in the shapes that apps, phones and mail programs write (see the
// README beside them): each is read into the source it is, with a text that
// shows its encoding and line ends were understood, or skipped with the
// reason the user is given. Scanning leaves the folder untouched, and a
// second scan, with the cache the first one filled, reads the same.
TEST(Corpus, EachExportIsReadOrSkippedWithItsReason) {
    // Each source as "first file | name | summary", and a text in one of its items.
    const std::vector<std::pair<std::string, std::string>> read = {
        {"email/Booking confirmation.eml | Emails | 3 emails · Jan 2024 – Mar 2024",
         "Zürich on 5 April 2024 is confirmed. Two passengers, one double room"},
        {"line/[LINE] Chat with Alex Morgan.txt | Alex Morgan | LINE · 5 messages · Mar 2024",
         "Good night\nsleep well"},
        {"meta/messages/inbox/alexmorgan_10158/message_1.json | Alex Morgan | Messenger · 3 "
         "messages · 1 call · Mar 2024",
         "Café at 8? Ça marche 👍"},
        {"meta/your_instagram_activity/messages/inbox/alex.morgan_17841/message_1.json | "
         "alex.morgan | Instagram · 3 messages · Apr 2024",
         "Zürich next week 🇨🇭"},
        {"photos/IMG_20240312_211503.jpg | Photos | 1 photo · Mar 2024", ""},
        {"spreadsheet/Messages with Alex.csv | Messages with Alex | 3 messages · Mar 2024",
         "Can't wait \"so happy\""},
        {"telegram/Single chat/result.json | Alex Morgan | Telegram · 4 messages · 1 call · Mar "
         "2024",
         "Look: https://example.org/flat 🏠"},
        {"telegram/Whole account/result.json | Alex Morgan | Telegram · 4 messages · 1 call · "
         "Mar 2024",
         "Good night ✨"},
        {"telegram/Whole account/result.json | Lee family | Telegram · 1 message · Dec 2023",
         "Bring Alex to dinner!"},
        {"whatsapp/Android 2016/WhatsApp Chat with Alex Morgan.txt | Alex Morgan | WhatsApp · 4 "
         "messages · Mar 2016",
         "Breakfast at 9?\na second line of the same message"},
        {"whatsapp/Android 2024 US/WhatsApp Chat with Alex Morgan.txt | Alex Morgan | WhatsApp · "
         "4 messages · Mar 2024",
         "Booked the flights for April"},
        {"whatsapp/Mixed phones/WhatsApp Chat with Alex Morgan.txt | Alex Morgan | WhatsApp · 5 "
         "messages · Jun 2022",
         "It did 🎉"},
        {"whatsapp/UTF-16/WhatsApp Chat with Alex Morgan.txt | Alex Morgan | WhatsApp · 3 "
         "messages · Feb 2020",
         "Happy Valentine's day 🌹"},
        {"whatsapp/iPhone 2018 CR/_chat.txt | iPhone 2018 CR | WhatsApp · 4 messages · Mar 2018",
         "See you at the pier"},
        {"whatsapp/iPhone 2024 BOM/_chat.txt | iPhone 2024 BOM | WhatsApp · 4 messages · Mar "
         "2024",
         "Hast du den Schlüssel?"},
    };
    const std::string noChat =
        "ZIP without a chat export inside. Unzip it into the folder if it holds photos or "
        "documents.";
    const std::vector<std::string> skipped = {
        "README.md | Not a file type Kinfolio reads.",
        "archives/WhatsApp Chat - Alex Morgan (bad directory).zip | " + noChat,
        "archives/WhatsApp Chat - Alex Morgan (truncated).zip | " + noChat,
        "documents/Lease.pdf | The file is empty. Copy it again from where it came from.",
        "telegram/HTML export/messages.html | Telegram HTML export. Export the chat again and "
        "choose \u201cMachine-readable JSON\u201d.",
    };

    testing::ScopedCacheHome cache;
    std::string before = testing::folderFingerprint(kCorpus);
    ScanResult scan = Scanner::scan(kCorpus, DateOrder::automatic, "UTC");
    EXPECT_EQ(testing::folderFingerprint(kCorpus), before);

    std::vector<std::string> expected;
    for (const auto& [source, text] : read) {
        expected.push_back(source);
        EXPECT_TRUE(holdsText(scan, source, text)) << source << "\nhas no " << text;
    }
    std::sort(expected.begin(), expected.end());
    expected.insert(expected.end(), skipped.begin(), skipped.end());
    EXPECT_EQ(shown(scan), expected);
    EXPECT_EQ(shown(Scanner::scan(kCorpus, DateOrder::automatic, "UTC")), expected);
}

}  // namespace
}  // namespace kinfolio::Scanner
