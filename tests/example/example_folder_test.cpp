#include "example/example_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>

#include "importers/csv.h"
#include "importers/dates.h"
#include "importers/email.h"
#include "importers/meta.h"
#include "model/calendar.h"
#include "model/json.h"
#include "model/text.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

// The example's files, and the folder write() leaves scanned as a user who
// chose it sees it.
class ExampleFolderTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (auto& [path, bytes] : ExampleFolder::files())
            files[path] = bytes;
        temp = std::make_unique<testing::TempFolder>();
        ExampleFolder::write(temp->path() + "/example");
        testing::ScopedCacheHome cache;
        scan = Scanner::scan(temp->path() + "/example", DateOrder::automatic, "Europe/London");
    }
    static void TearDownTestSuite() { temp.reset(); }

    static const std::string& file(const std::string& path) {
        EXPECT_TRUE(files.contains(path)) << path;
        return files[path];
    }
    static const Source& source(SourceKind kind, const std::string& name) {
        for (const auto& s : scan.sources)
            if (s.kind == kind && s.name == name) return s;
        throw std::runtime_error("no source " + name);
    }
    static int count(const Source& source, bool (*rule)(const Evidence&)) {
        return static_cast<int>(std::count_if(source.items.begin(), source.items.end(), rule));
    }

    static inline std::map<std::string, std::string> files;
    static inline std::unique_ptr<testing::TempFolder> temp;
    static inline ScanResult scan;
};

TEST_F(ExampleFolderTest, EveryTextIsValidUtf8AndEveryPictureWhatItsNameSays) {
    ASSERT_GE(files.size(), 12u);
    const std::pair<std::string, std::string> magic[] = {
        {".png", "\x89PNG"}, {".jpg", "\xFF\xD8\xFF"}, {".zip", "PK\x03\x04"}, {".pdf", "%PDF-"}};
    for (const auto& [path, bytes] : files) {
        bool binary = path.ends_with(".mp4");
        if (binary) {
            EXPECT_EQ(bytes.substr(4, 4), "ftyp") << path;
        }
        for (const auto& [suffix, start] : magic)
            if (path.ends_with(suffix)) {
                binary = true;
                EXPECT_TRUE(bytes.starts_with(start)) << path;
            }
        if (!binary) {
            EXPECT_TRUE(isValidUtf8(bytes)) << path;
        }
    }
}

// Every export is read, one source each, nothing skipped and no note asking
// the user to check dates.
TEST_F(ExampleFolderTest, EveryExportIsReadWithoutASkippedFileOrANote) {
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
    for (const auto& [path, bytes] : files)
        if (path != "Quillory - Jonas Berg/verification.txt") {
            EXPECT_TRUE(used.contains(path)) << path;
        }
}

// The chats show what their formats can: an iPhone chat of about fourteen
// months with two linked photos and a message over several lines; an
// Android chat written day first and opening with a system line; a Telegram
// account with two calls; a LINE chat under its history header.
TEST_F(ExampleFolderTest, TheChatsShowWhatTheirFormatsCan) {
    const Source& iphone = source(SourceKind::whatsapp, "Jonas Berg");
    auto range = iphone.dateRange();
    ASSERT_TRUE(range);
    EXPECT_EQ(Calendar::monthKey(range->first), "2024-03");
    EXPECT_EQ(Calendar::monthKey(range->second), "2025-04");
    EXPECT_EQ(count(iphone, [](const Evidence& e) { return e.details().attachmentID.has_value(); }),
              2);
    EXPECT_EQ(count(iphone,
                    [](const Evidence& e) {
                        return e.text.find("\nMum wants to meet you.\n") != std::string::npos;
                    }),
              1);
    EXPECT_EQ(Importer::detectOrder(file("WhatsApp Chat with Grace Okafor.txt")),
              DateOrder::dayFirst);

    const Source& android = source(SourceKind::whatsapp, "Grace Okafor");
    ASSERT_GE(android.items.size(), 8u);
    EXPECT_TRUE(android.items[0].isSystem());
    EXPECT_EQ(android.items[1].sender, "Grace Okafor");

    auto isCall = [](const Evidence& e) { return e.kind == ItemKind::call; };
    EXPECT_EQ(count(source(SourceKind::telegram, "Maya Okafor"), isCall), 2);
    const std::string& line = file("[LINE] Chat with Jonas Berg.txt");
    EXPECT_TRUE(line.starts_with("[LINE] Chat history with Jonas Berg\n"));
    EXPECT_EQ(source(SourceKind::line, "Jonas Berg").items.size(), 7u);
}

// Meta writes plain ASCII, non-ASCII as escaped single bytes, newest first.
TEST_F(ExampleFolderTest, MetaFilesSpellTextAsMetaDoes) {
    for (std::string path :
         {"facebook-mayaokafor-2025-04-20/your_facebook_activity/messages/inbox/"
          "jonasberg_10158912345/message_1.json",
          "instagram-mayaokafor-2025-04-20/your_instagram_activity/messages/inbox/"
          "jonas.berg_17841400234567/message_1.json"}) {
        const std::string& data = file(path);
        EXPECT_TRUE(Importer::isMeta(data)) << path;
        EXPECT_TRUE(std::all_of(data.begin(), data.end(),
                                [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
        double previous = 1e300;
        Json json = Json::parse(data);
        for (const auto& m : json["messages"]) {
            EXPECT_LT(m["timestamp_ms"].get<double>(), previous) << "newest first";
            previous = m["timestamp_ms"].get<double>();
        }
    }
}

TEST_F(ExampleFolderTest, SpreadsheetsHaveEvenRowsAndTheMboxEscapesFromLines) {
    for (std::string path :
         {"Text messages/SMS with Jonas.csv", "Quillory - Jonas Berg/messages.csv"}) {
        const std::string& text = file(path);
        auto header = Importer::csvHeader(text);
        ASSERT_TRUE(header) << path;
        for (const auto& row : Importer::csvRows(text))
            EXPECT_EQ(row.size(), header->size()) << path;
    }
    EXPECT_TRUE(
        file("Quillory - Jonas Berg/verification.txt").starts_with("Quillory verification report"));
    const std::string& mbox = file("Emails/Letters.mbox");
    EXPECT_TRUE(Importer::looksLikeEmail(mbox));
    EXPECT_TRUE(mbox.starts_with("From "));
    EXPECT_NE(mbox.find("\n>From "), std::string::npos);
}

// The example is told apart by its own files, without making it again: the
// folder write() leaves is the example, and so is no folder that lacks any
// one of its files or holds one of its texts changed.
TEST_F(ExampleFolderTest, HoldsExampleKnowsTheWrittenFolderAndNoOtherOne) {
    const std::string folder = temp->path() + "/example";
    ASSERT_TRUE(ExampleFolder::holdsExample(folder))
        << "the table of written files in example_folder.cpp no longer fits the example";
    for (const auto& [path, bytes] : files) {
        std::string file = folder + "/" + path;
        std::filesystem::rename(file, file + ".away");
        EXPECT_FALSE(ExampleFolder::holdsExample(folder)) << path;
        std::filesystem::rename(file + ".away", file);
    }
    std::string text = file("WhatsApp Chat with Grace Okafor.txt");
    std::replace(text.begin(), text.end(), 'a', 'e');
    temp->write("example/WhatsApp Chat with Grace Okafor.txt", text);
    EXPECT_FALSE(ExampleFolder::holdsExample(folder));
    temp->write("example/WhatsApp Chat with Grace Okafor.txt",
                file("WhatsApp Chat with Grace Okafor.txt"));
}

}  // namespace
}  // namespace kinfolio
