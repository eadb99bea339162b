#include "example/example_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "importers/csv.h"
#include "importers/dates.h"
#include "importers/email.h"
#include "importers/line.h"
#include "importers/meta.h"
#include "importers/telegram.h"
#include "importers/whatsapp.h"
#include "model/json.h"
#include "model/text.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"
#include "support/zip_entries.h"

namespace kinfolio {
namespace {

// The messages of a WhatsApp export as its reader sees them: each line
// opens a message with a readable timestamp or continues the last one.
struct Message {
    Instant date;
    std::string text;
};
std::vector<Message> whatsappMessages(const std::string& chat, bool iphone) {
    std::vector<Message> out;
    std::istringstream lines(chat);
    for (std::string line; std::getline(lines, line);) {
        size_t open = iphone ? 1 : 0;
        size_t end = iphone ? (line.starts_with("[") ? line.find("] ") : std::string::npos)
                            : line.find(" - ");
        std::string stamp = end == std::string::npos ? "" : line.substr(open, end - open);
        std::erase(stamp, ',');
        auto date = stamp.empty() ? std::nullopt : Importer::date(stamp, DateOrder::dayFirst);
        if (date) {
            out.push_back({*date, line.substr(end + (iphone ? 2 : 3))});
        } else {
            EXPECT_FALSE(out.empty()) << line;
            if (!out.empty()) out.back().text += "\n" + line;
        }
    }
    return out;
}

class ExampleFolderTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (auto& [path, bytes] : ExampleFolder::files())
            files[path] = bytes;
    }
    const std::string& file(const std::string& path) {
        EXPECT_TRUE(files.contains(path)) << path;
        return files[path];
    }
    static inline std::map<std::string, std::string> files;
};

TEST_F(ExampleFolderTest, EveryTextIsValidUtf8AndEveryPictureWhatItsNameSays) {
    ASSERT_GE(files.size(), 12u);
    for (const auto& [path, bytes] : files) {
        if (path.ends_with(".png"))
            EXPECT_TRUE(bytes.starts_with("\x89PNG")) << path;
        else if (path.ends_with(".jpg"))
            EXPECT_TRUE(bytes.starts_with("\xFF\xD8\xFF")) << path;
        else if (path.ends_with(".zip"))
            EXPECT_TRUE(bytes.starts_with("PK\x03\x04")) << path;
        else if (path.ends_with(".pdf"))
            EXPECT_TRUE(bytes.starts_with("%PDF-")) << path;
        else if (path.ends_with(".mp4"))
            EXPECT_EQ(bytes.substr(4, 4), "ftyp") << path;
        else
            EXPECT_TRUE(isValidUtf8(bytes)) << path;
    }
}

TEST_F(ExampleFolderTest, TheWhatsAppZipHoldsAnIphoneChatWithBothPhotosLinkable) {
    auto entries = testing::zipEntries(file("WhatsApp Chat - Jonas Berg.zip"));
    ASSERT_TRUE(entries.contains("_chat.txt"));
    const std::string& chat = entries["_chat.txt"];
    ASSERT_TRUE(Importer::looksLikeWhatsApp(chat));
    EXPECT_EQ(Importer::detectOrder(chat), DateOrder::dayFirst);
    auto messages = whatsappMessages(chat, true);
    EXPECT_GE(messages.size(), 20u);
    int attached = 0;
    for (const auto& item : messages) {
        auto at = item.text.find("<attached: ");
        if (at == std::string::npos) continue;
        std::string name = item.text.substr(at + 11, item.text.find('>', at) - at - 11);
        EXPECT_TRUE(entries.contains(name)) << name;
        EXPECT_TRUE(entries[name].starts_with("\x89PNG")) << name;
        ++attached;
    }
    EXPECT_EQ(attached, 2);
    // Multi-line messages continue on the next lines.
    EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [](const Message& e) {
        return e.text.find("\nMum wants to meet you.") != std::string::npos;
    }));
}

TEST_F(ExampleFolderTest, TheAndroidChatStartsWithASystemLine) {
    const std::string& chat = file("WhatsApp Chat with Grace Okafor.txt");
    ASSERT_TRUE(Importer::looksLikeWhatsApp(chat));
    auto messages = whatsappMessages(chat, false);
    ASSERT_GE(messages.size(), 8u);
    // A system line has no "sender: " before its text.
    EXPECT_EQ(messages[0].text.find(": "), std::string::npos);
    EXPECT_TRUE(messages[1].text.starts_with("Grace Okafor: "));
}

TEST_F(ExampleFolderTest, TheTelegramExportIsAWholeAccountWithItsPhoto) {
    const std::string& data = file("Telegram Export 2025-04-20/result.json");
    EXPECT_TRUE(Importer::isTelegram(data));
    Json json = Json::parse(data);
    const Json& chat = json["chats"]["list"][0];
    EXPECT_EQ(chat["type"], "personal_chat");
    int calls = 0;
    for (const auto& m : chat["messages"]) {
        EXPECT_TRUE(Importer::date(m["date"].get<std::string>(), DateOrder::dayFirst));
        if (m["type"] == "service") {
            EXPECT_EQ(m["action"], "phone_call");
            ++calls;
        }
        if (m.contains("photo")) {
            EXPECT_TRUE(
                files.contains("Telegram Export 2025-04-20/" + m["photo"].get<std::string>()));
        }
    }
    EXPECT_EQ(calls, 2);
}

TEST_F(ExampleFolderTest, MetaFilesSpellTextAsMetaDoes) {
    for (std::string path :
         {"facebook-mayaokafor-2025-04-20/your_facebook_activity/messages/inbox/"
          "jonasberg_10158912345/message_1.json",
          "instagram-mayaokafor-2025-04-20/your_instagram_activity/messages/inbox/"
          "jonas.berg_17841400234567/message_1.json"}) {
        const std::string& data = file(path);
        EXPECT_TRUE(Importer::isMeta(data)) << path;
        // Plain ASCII on disk, non-ASCII as escaped single bytes.
        EXPECT_TRUE(std::all_of(data.begin(), data.end(),
                                [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
        Json json = Json::parse(data);
        double previous = 1e300;
        for (const auto& m : json["messages"]) {
            double t = m["timestamp_ms"].get<double>();
            EXPECT_LT(t, previous) << "newest first";
            previous = t;
        }
    }
}

TEST_F(ExampleFolderTest, TheLineExportHasDayHeadersAndTabbedLines) {
    const std::string& text = file("[LINE] Chat with Jonas Berg.txt");
    EXPECT_TRUE(text.starts_with("[LINE] Chat history with Jonas Berg\n"));
    int days = 0, messages = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (Importer::lineDay(line)) ++days;
        if (std::count(line.begin(), line.end(), '\t') == 2) ++messages;
    }
    EXPECT_EQ(days, 3);
    EXPECT_EQ(messages, 7);
}

TEST_F(ExampleFolderTest, SpreadsheetsHaveTheirColumnsAndEvenRows) {
    for (std::string path :
         {"Text messages/SMS with Jonas.csv", "Quillory - Jonas Berg/messages.csv"}) {
        const std::string& text = file(path);
        auto header = Importer::csvHeader(text);
        ASSERT_TRUE(header) << path;
        EXPECT_TRUE(Importer::hasChatColumns(*header)) << path;
        auto rows = Importer::csvRows(text);
        ASSERT_GE(rows.size(), 6u);
        for (const auto& row : rows) {
            EXPECT_EQ(row.size(), header->size()) << path;
            if (&row != &rows.front()) {
                EXPECT_TRUE(Importer::date(row[0].substr(0, 19), DateOrder::dayFirst)) << row[0];
            }
        }
    }
    EXPECT_TRUE(
        file("Quillory - Jonas Berg/verification.txt").starts_with("Quillory verification report"));
    EXPECT_TRUE(files.contains("Quillory - Jonas Berg/attachments/IMG_2231.png"));
}

TEST_F(ExampleFolderTest, TheMailFilesAreRecognisedAsEmail) {
    EXPECT_TRUE(Importer::looksLikeEmail(file("Emails/Booking confirmation.eml")));
    const std::string& mbox = file("Emails/Letters.mbox");
    EXPECT_TRUE(Importer::looksLikeEmail(mbox));
    EXPECT_TRUE(mbox.starts_with("From "));
    EXPECT_NE(mbox.find("\n>From "), std::string::npos);
}

TEST_F(ExampleFolderTest, TheChatsSpanAboutFourteenMonths) {
    auto messages = whatsappMessages(
        testing::zipEntries(file("WhatsApp Chat - Jonas Berg.zip"))["_chat.txt"], true);
    EXPECT_EQ(Calendar::monthKey(messages.front().date), "2024-03");
    EXPECT_EQ(Calendar::monthKey(messages.back().date), "2025-04");
}

// The example is told apart by its own files, without making it again: the
// folder write() leaves is the example, and so is no folder that lacks any
// one of its files or holds one of its texts changed.
TEST_F(ExampleFolderTest, HoldsExampleKnowsTheWrittenFolderAndNoOtherOne) {
    testing::TempFolder temp;
    ExampleFolder::write(temp.path() + "/example");
    ASSERT_TRUE(ExampleFolder::holdsExample(temp.path() + "/example"))
        << "the table of written files in example_folder.cpp no longer fits the example";
    for (const auto& [path, bytes] : files) {
        std::string file = temp.path() + "/example/" + path;
        std::filesystem::rename(file, file + ".away");
        EXPECT_FALSE(ExampleFolder::holdsExample(temp.path() + "/example")) << path;
        std::filesystem::rename(file + ".away", file);
    }
    std::string text = file("WhatsApp Chat with Grace Okafor.txt");
    std::replace(text.begin(), text.end(), 'a', 'e');
    temp.write("example/WhatsApp Chat with Grace Okafor.txt", text);
    EXPECT_FALSE(ExampleFolder::holdsExample(temp.path() + "/example"));
}

// What a user sees after choosing the example folder: every export read, one
// source each, nothing skipped and no note asking them to check dates.
TEST(ExampleFolderScan, EveryExportIsReadWithoutASkippedFileOrANote) {
    testing::ScopedCacheHome cache;
    testing::TempFolder temp;
    std::string folder = temp.path() + "/example";
    ExampleFolder::write(folder);
    ScanResult scan = Scanner::scan(folder, DateOrder::automatic, "Europe/London");
    for (const auto& skipped : scan.skipped)
        ADD_FAILURE() << skipped.path << ": " << skipped.reason;
    std::vector<std::pair<SourceKind, std::string>> sources;
    std::set<std::string> used;
    for (const auto& source : scan.sources) {
        sources.emplace_back(source.kind, source.name);
        EXPECT_FALSE(source.items.empty()) << source.name;
        for (const auto& file : source.files)
            used.insert(file.path);
        // Meta exports always say which zone their UTC times were moved into.
        std::vector<std::string> expected;
        if (source.kind == SourceKind::messenger || source.kind == SourceKind::instagram)
            expected = {
                "Times converted from UTC to Europe/London. Change Time zone if that is "
                "wrong."};
        // Two photos carry the camera's date; the one a messenger passed on
        // is dated by its name.
        if (source.kind == SourceKind::photos)
            expected = {"1 photo has no camera date; marked as estimated."};
        EXPECT_EQ(source.notes, expected) << source.name;
    }
    EXPECT_EQ(sources, (std::vector<std::pair<SourceKind, std::string>>{
                           {SourceKind::whatsapp, "Grace Okafor"},
                           {SourceKind::line, "Jonas Berg"},
                           {SourceKind::messenger, "Jonas Berg"},
                           {SourceKind::instagram, "Jonas Berg"},
                           {SourceKind::whatsapp, "Jonas Berg"},
                           {SourceKind::telegram, "Maya Okafor"},
                           {SourceKind::quillory, "Maya Okafor & Jonas Berg"},
                           {SourceKind::chatCSV, "SMS with Jonas"},
                           {SourceKind::photos, "Photos"},
                           {SourceKind::screenshots, "Screenshots"},
                           {SourceKind::videos, "Videos"},
                           {SourceKind::documents, "Documents"},
                           {SourceKind::emails, "Emails"},
                       }));
    // Every file is a source's file, the chats' photos too; a Quillory
    // folder's verification report is read with its messages.
    for (const auto& [path, bytes] : ExampleFolder::files())
        if (path != "Quillory - Jonas Berg/verification.txt") {
            EXPECT_TRUE(used.contains(path)) << path;
        }
}

}  // namespace
}  // namespace kinfolio
