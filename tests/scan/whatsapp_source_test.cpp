#include "scan/whatsapp_source.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "example/zip_writer.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

namespace fs = std::filesystem;
using testing::itemLines;
using testing::scanFiles;
using testing::shown;
using testing::sourceNamed;

const std::string kPhotoName = "00000003-PHOTO-2025-01-05-09-04-00.jpg";
const std::string kPhoto = "\xFF\xD8\xFF\xE0 not really a jpeg";
const std::string kChat =
    "[05/01/2025, 09:00:00] Alex Morgan: Did you land safely?\n"
    "[05/01/2025, 09:04:00] Sam Lee: <attached: " +
    kPhotoName +
    ">\n"
    "[05/01/2025, 09:05:00] Sam Lee: Bring the blue scarf\n"
    "it's cold here.\n";
const std::string kAmbiguous =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

TEST(WhatsAppSource, LooseChatLinksThePhotoBesideIt) {
    testing::TempFolder dir;
    ScanResult r = scanFiles(
        dir, {{"Trip to Lisbon/_chat.txt", kChat}, {"Trip to Lisbon/" + kPhotoName, kPhoto}});
    // The photo is claimed, not listed again.
    EXPECT_EQ(shown(r), std::vector<std::string>{
                            "Trip to Lisbon/_chat.txt | Trip to Lisbon | WhatsApp · 3 messages · "
                            "Jan 2025"});
    const Source& s = r.sources.at(0);
    EXPECT_EQ(s.kind, SourceKind::whatsapp);
    EXPECT_EQ(s.notes, std::vector{kAmbiguous});
    EXPECT_EQ(itemLines(s),
              (std::vector<std::string>{
                  "2025-01-05 09:00 Alex Morgan: Did you land safely?",
                  "2025-01-05 09:04 Sam Lee: <attached: " + kPhotoName + ">",
                  "2025-01-05 09:05 Sam Lee: Bring the blue scarf\nit's cold here."}));
    const Evidence& attached = s.items[1];
    EXPECT_EQ(attached.details().attachmentName, kPhotoName);
    EXPECT_EQ(attached.details().imageURL, dir.path() + "/Trip to Lisbon/" + kPhotoName);
    EXPECT_EQ(attached.details().attachmentID, sha256Hex(kPhoto));
    EXPECT_EQ(attached.fileID, s.files.at(0).sha256);
    ASSERT_EQ(s.files.size(), 2u);
    EXPECT_EQ(s.files[1], (FileRecord{"Trip to Lisbon/" + kPhotoName, sha256Hex(kPhoto),
                                      static_cast<int64_t>(kPhoto.size())}));
}

// A chat claims the files it names beside it, whatever their kind and even
// when they sort before it, but never a file outside its folder.
TEST(WhatsAppSource, AttachmentsAreClaimedOnlyInsideTheExport) {
    ScanResult r = scanFiles({{"c/Sam.txt",
                               "5/1/25, 9:04 PM - Sam: <attached: missing.jpg>\n"
                               "5/1/25, 9:05 PM - Sam: x-notes.pdf (file attached)\n"
                               "5/1/25, 9:06 PM - Sam: x-clip.mp4 (file attached)\n"},
                              {"c/x-notes.pdf", "%PDF-1.4"},
                              {"c/x-clip.mp4", "video"},
                              {"trip/Trip.txt",
                               "[05/01/2025, 09:00:00] Sam Lee: <attached: "
                               "IMG_0001.jpg>\n[05/01/2025, 09:01:00] Alex "
                               "Morgan: Lovely\n"},
                              {"trip/IMG_0001.jpg", kPhoto},
                              {"chat/_chat.txt",
                               "[05/01/2025, 09:00:00] Sam Lee: <attached: "
                               "../outside.jpg>\n"},
                              {"outside.jpg", kPhoto + " outside"},
                              // The title line is no message; both dashes are read.
                              {"WhatsApp Chat with Sam Lee.txt",
                               "WhatsApp Chat with Sam Lee\n5/1/25, 9:04\u202FPM - Sam Lee: "
                               "hi\n5/1/25, 9:05 PM \u2013 Alex: hello\n"}},
                             DateOrder::monthFirst);
    EXPECT_EQ(shown(r), (std::vector<std::string>{
                            "WhatsApp Chat with Sam Lee.txt | Sam Lee | WhatsApp · 2 messages · "
                            "May 2025",
                            "c/Sam.txt | Sam | WhatsApp · 3 messages · May 2025",
                            "chat/_chat.txt | chat | WhatsApp · 1 message · May 2025",
                            "trip/Trip.txt | Trip | WhatsApp · 2 messages · May 2025",
                            "outside.jpg | Image could not be opened."}));
    const Source* plain = sourceNamed(r, "Sam");
    ASSERT_EQ(plain->items.size(), 3u);
    EXPECT_EQ(plain->items[0].details().attachmentName, "missing.jpg");
    EXPECT_EQ(plain->items[1].details().attachmentName, "x-notes.pdf");
    EXPECT_EQ(plain->items[2].details().attachmentName, "x-clip.mp4");
    for (const auto& item : plain->items)
        EXPECT_FALSE(item.details().imageURL || item.details().attachmentID);
    EXPECT_EQ(plain->files.size(), 1u);
    EXPECT_TRUE(plain->notes.empty());  // the order was chosen
    ASSERT_EQ(sourceNamed(r, "Trip")->files.size(), 2u);
    EXPECT_EQ(sourceNamed(r, "Trip")->files[1].path, "trip/IMG_0001.jpg");
    EXPECT_EQ(sourceNamed(r, "chat")->files.size(), 1u);
    EXPECT_FALSE(sourceNamed(r, "chat")->items.at(0).details().imageURL);
    const Source* titled = sourceNamed(r, "Sam Lee");
    EXPECT_EQ(titled->notes, std::vector<std::string>{"Ignored header line 1."});
    EXPECT_EQ(itemLines(*titled), (std::vector<std::string>{"2025-05-01 21:04 Sam Lee: hi",
                                                            "2025-05-01 21:05 Alex: hello"}));
}

TEST(WhatsAppSource, AutomaticOrderUsesWhatTheDatesTell) {
    ScanResult r = scanFiles(
        {{"a/_chat.txt", "[05/01/2025, 09:00:00] Sam: a\n[14/01/2025, 09:00:00] Sam: b\n"},
         {"b/_chat.txt", "[05/01/2025, 09:00:00] Sam: a\n[01/14/2025, 09:00:00] Sam: b\n"},
         // Dates that could be either, but that only run forward as month/day.
         {"c/_chat.txt",
          "[3/4/25, 9:00:00 PM] Sam: a\n[3/9/25, 9:00:00 PM] Sam: b\n"
          "[4/2/25, 9:00:00 PM] Sam: c\n"}});
    const std::string monthFirst =
        "The dates could be day/month or month/day; month first was chosen, because the dates "
        "only make sense as month/day. Change Date order if they look wrong.";
    const struct {
        const char* name;
        std::vector<std::string> items;
        std::string note;
    } cases[] = {
        {"a", {"2025-01-05 09:00 Sam: a", "2025-01-14 09:00 Sam: b"}, ""},
        {"b", {"2025-01-14 09:00 Sam: b", "2025-05-01 09:00 Sam: a"}, ""},
        {"c",
         {"2025-03-04 21:00 Sam: a", "2025-03-09 21:00 Sam: b", "2025-04-02 21:00 Sam: c"},
         monthFirst},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Source* s = sourceNamed(r, c.name);
        ASSERT_TRUE(s);
        EXPECT_EQ(itemLines(*s), c.items);
        EXPECT_EQ(s->notes, c.note.empty() ? std::vector<std::string>{} : std::vector{c.note});
    }
    EXPECT_EQ(sourceNamed(r, "b")->items[1].position, 1);  // in date order, each keeps its line
}

TEST(WhatsAppSource, TitlePrefixesAndAttachmentExpressions) {
    const std::pair<const char*, const char*> titles[] = {
        {"WhatsApp Chat with Sam", "Sam"},
        {"WhatsApp Chat - Family", "Family"},
        {"WhatsApp-Chat mit Oma", "Oma"},
        {"Chat de WhatsApp con Ana", "Ana"},
        {"WhatsApp Chat with WhatsApp Chat - x", "WhatsApp Chat - x"},  // the first hit only
        {"Sam", "Sam"},
    };
    for (const auto& [title, name] : titles)
        EXPECT_EQ(withoutTitlePrefix(title), name);
    const std::pair<const char*, std::optional<std::string>> messages[] = {
        {"see <attached: a b.jpg> here", "a b.jpg"},
        {"IMG-2025.jpg (file attached)", "IMG-2025.jpg"},
        {"IMG-2025.jpg (file attached)\n<attached: first.jpg>", "first.jpg"},
        {"look: IMG.jpeg2 (file attached)", std::nullopt},
        {" IMG.jpg (file attached)", std::nullopt},
        {"no attachment", std::nullopt},
    };
    for (const auto& [text, name] : messages)
        EXPECT_EQ(attachmentName(text), name) << text;
}

std::string zippedChat() {
    return ZipWriter::archive({
        {"__MACOSX/WhatsApp Chat with Sam Lee/._chat.txt", "\x05\x16\x07 resource fork", false},
        {"WhatsApp Chat with Sam Lee/", "", false},
        {"WhatsApp Chat with Sam Lee/_chat.txt", kChat},
        {"WhatsApp Chat with Sam Lee/" + kPhotoName, kPhoto},
    });
}

TEST(WhatsAppSource, ZippedChatScansToTheSameItems) {
    testing::ScopedCacheHome cache;
    testing::TempFolder zipped;
    std::string zipBytes = zippedChat();
    zipped.write("WhatsApp Chat with Sam Lee.zip", zipBytes);
    ::chmod(zipped.path().c_str(), 0555);  // a write into the folder would fail loudly
    ScanResult a = scanFiles({{"WhatsApp Chat with Sam Lee/_chat.txt", kChat},
                              {"WhatsApp Chat with Sam Lee/" + kPhotoName, kPhoto}});
    ScanResult b = scanFiles(zipped, {});
    EXPECT_EQ(shown(b), std::vector<std::string>{"WhatsApp Chat with Sam Lee.zip | Sam Lee | "
                                                 "WhatsApp · 3 messages · Jan 2025"});
    const Source& s = b.sources.at(0);
    EXPECT_EQ(s.id, sha256Hex(zipBytes));
    EXPECT_EQ(itemLines(s), itemLines(a.sources.at(0)));
    EXPECT_EQ(s.notes, a.sources[0].notes);
    for (size_t i = 0; i < s.items.size(); ++i) {
        EXPECT_EQ(s.items[i].position, a.sources[0].items[i].position);
        EXPECT_EQ(s.items[i].details().attachmentName,
                  a.sources[0].items[i].details().attachmentName);
        EXPECT_EQ(s.items[i].details().attachmentID, a.sources[0].items[i].details().attachmentID);
    }

    // Unpacked into the private cache, one folder per archive.
    std::string folder = cache.path() + "/kinfolio/whatsapp/" + sha256Hex(zipBytes).substr(0, 16);
    std::string photo = folder + "/WhatsApp Chat with Sam Lee/" + kPhotoName;
    EXPECT_EQ(s.items[1].details().imageURL, photo);
    EXPECT_EQ(testing::readFile(photo), kPhoto);
    EXPECT_FALSE(fs::exists(folder + "/__MACOSX"));
    for (const std::string& made : {folder, cache.path() + "/kinfolio"})
        EXPECT_EQ(fs::status(made).permissions() & fs::perms::all, fs::perms::owner_all) << made;

    // A second scan reuses what is there.
    std::string marker = folder + "/kept.txt";
    { std::ofstream(marker) << "kept"; }
    EXPECT_EQ(scanFiles(zipped, {}).sources.size(), 1u);
    EXPECT_TRUE(fs::exists(marker));
}

TEST(WhatsAppSource, PlantedLinkInTheCacheIsReplacedNotFollowed) {
    testing::ScopedCacheHome cache;
    testing::TempFolder elsewhere;
    std::string zipBytes = zippedChat();
    std::string root = cache.path() + "/kinfolio/whatsapp";
    fs::create_directories(root);
    fs::permissions(cache.path() + "/kinfolio", fs::perms::owner_all, fs::perm_options::replace);
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::replace);
    fs::create_directory_symlink(elsewhere.path(), root + "/" + sha256Hex(zipBytes).substr(0, 16));
    ScanResult r = scanFiles({{"chat.zip", zipBytes}});
    EXPECT_EQ(shown(r),
              std::vector<std::string>{"chat.zip | chat | WhatsApp · 3 messages · Jan 2025"});
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST(WhatsAppSource, ChatsThatCannotBeReadAreSkippedWithTheirReason) {
    testing::ScopedCacheHome cache;
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string("[05/01/2025, 09:00:00] Sam: hi\n"))
        utf16 += std::string{c, '\0'};
    ScanResult r = scanFiles(
        {{"photos.zip", ZipWriter::archive({{"a.jpg", "jpeg"}, {"__MACOSX/._x.txt", "fork"}})},
         {"utf16.zip", ZipWriter::archive({{"_chat.txt", utf16}})},
         {"notes.zip", ZipWriter::archive({{"notes.txt", "just notes\nnothing else\nreally\n"}})},
         {"broken.zip", "PK not really"},
         {"x/_chat.txt",
          "[05/01/2025, 09:00:00] Sam: a\n[05/01/2025, 09:01:00] Sam: b\n05/01/2025 "
          "Unsupported\n"}});
    const std::string noChat =
        "ZIP without a chat export inside. Unzip it into the folder if it holds photos or "
        "documents.";
    EXPECT_EQ(shown(r), (std::vector<std::string>{
                            "broken.zip | " + noChat,
                            "notes.zip | " + noChat,
                            "photos.zip | " + noChat,
                            "utf16.zip | Chat inside the ZIP is not UTF-8 text.",
                            "x/_chat.txt | Looks like a WhatsApp chat, but: Unsupported timestamp "
                            "on line 3.",
                        }));
}

TEST(WhatsAppSource, ChatEntryPrefersTheRealChat) {
    auto entry = [](const std::vector<ZipWriter::Entry>& entries) {
        auto found = chatEntry(ZipArchive::fromBytes(ZipWriter::archive(entries)));
        return found ? found->path : "(none)";
    };
    EXPECT_EQ(entry({{"__MACOSX/._chat.txt", "x"}, {"readme.txt", "r"}, {"sub/_chat.txt", "c"}}),
              "sub/_chat.txt");
    EXPECT_EQ(entry({{"a.jpg", "x"}, {"b.txt", "b"}}), "b.txt");
    EXPECT_EQ(entry({{"a.jpg", "x"}}), "(none)");
}

}  // namespace
}  // namespace kinfolio::Scanner
