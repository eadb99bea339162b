#include "scan/whatsapp_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "cli/cli.h"
#include "model/calendar.h"
#include "model/json.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"
#include "support/zip_writer.h"

namespace kinfolio::Scanner {
namespace {

namespace fs = std::filesystem;
using testing::folderFingerprint;
using testing::makeZip;
using testing::TempFolder;

const std::string kPhotoName = "00000003-PHOTO-2025-01-05-09-04-00.jpg";
const std::string kPhoto = "\xFF\xD8\xFF\xE0 not really a jpeg";
const std::string kChat =
    "[05/01/2025, 09:00:00] Alex Morgan: Did you land safely?\n"
    "[05/01/2025, 09:04:00] Sam Lee: <attached: " +
    kPhotoName +
    ">\n"
    "[05/01/2025, 09:05:00] Sam Lee: Bring the blue scarf\n"
    "it's cold here.\n";
const char* kAmbiguous =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

ScanResult scanFolder(const std::string& folder, DateOrder order = DateOrder::automatic) {
    return scan(folder, order, "UTC");
}

const Source* findKind(const ScanResult& r, SourceKind kind) {
    for (const auto& s : r.sources)
        if (s.kind == kind) return &s;
    return nullptr;
}

TEST(WhatsAppSource, LooseChatLinksThePhotoBesideIt) {
    TempFolder tmp;
    tmp.write("Trip to Lisbon/_chat.txt", kChat);
    std::string photo = tmp.write("Trip to Lisbon/" + kPhotoName, kPhoto);
    auto before = folderFingerprint(tmp.path());
    auto result = scanFolder(tmp.path());
    EXPECT_EQ(folderFingerprint(tmp.path()), before);  // nothing under the folder is written

    ASSERT_EQ(result.sources.size(), 1u);
    const Source& s = result.sources[0];
    EXPECT_EQ(s.kind, SourceKind::whatsapp);
    EXPECT_EQ(s.name, "Trip to Lisbon");
    EXPECT_EQ(s.detail, "WhatsApp · 3 messages · Jan 2025");
    EXPECT_EQ(s.notes, std::vector<std::string>{kAmbiguous});
    ASSERT_EQ(s.items.size(), 3u);
    const Evidence& attached = s.items[1];
    EXPECT_EQ(attached.details().attachmentName, kPhotoName);
    EXPECT_EQ(attached.details().imageURL, photo);
    EXPECT_EQ(attached.details().attachmentID, sha256Hex(kPhoto));
    EXPECT_EQ(attached.date, *Calendar::makeDate(2025, 1, 5, 9, 4));
    EXPECT_EQ(s.items[2].text, "Bring the blue scarf\nit's cold here.");
    ASSERT_EQ(s.files.size(), 2u);
    EXPECT_EQ(s.files[0].path, "Trip to Lisbon/_chat.txt");
    EXPECT_EQ(s.files[1], (FileRecord{"Trip to Lisbon/" + kPhotoName, sha256Hex(kPhoto),
                                      static_cast<int64_t>(kPhoto.size())}));
    EXPECT_TRUE(result.skipped.empty());  // the photo is claimed, not listed again
    EXPECT_EQ(attached.fileID, s.files[0].sha256);
}

TEST(WhatsAppSource, MissingOrNonImageAttachmentsStayPlainMessages) {
    TempFolder tmp;
    tmp.write("c/Sam.txt",
              "5/1/25, 9:04 PM - Sam: <attached: missing.jpg>\n"
              "5/1/25, 9:05 PM - Sam: x-notes.pdf (file attached)\n"
              "5/1/25, 9:06 PM - Sam: x-clip.mp4 (file attached)\n");
    // Listed after the chat, so the scan meets them once the chat has claimed them.
    tmp.write("c/x-notes.pdf", "%PDF-1.4");
    tmp.write("c/x-clip.mp4", "video");
    auto result = scanFolder(tmp.path(), DateOrder::monthFirst);
    const Source* s = findKind(result, SourceKind::whatsapp);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->name, "Sam");
    EXPECT_TRUE(s->notes.empty());
    ASSERT_EQ(s->items.size(), 3u);
    EXPECT_EQ(s->items[0].details().attachmentName, "missing.jpg");
    EXPECT_EQ(s->items[1].details().attachmentName, "x-notes.pdf");
    EXPECT_EQ(s->items[2].details().attachmentName, "x-clip.mp4");
    for (const auto& item : s->items) {
        EXPECT_FALSE(item.details().imageURL);
        EXPECT_FALSE(item.details().attachmentID);
    }
    EXPECT_EQ(s->files.size(), 1u);
    EXPECT_TRUE(result.skipped.empty());  // attached pdf and video are claimed too
}

TEST(WhatsAppSource, AndroidExportWithTitleLineAndBothDashes) {
    TempFolder tmp;
    tmp.write("WhatsApp Chat with Sam Lee.txt",
              "WhatsApp Chat with Sam Lee\n"
              "5/1/25, 9:04\u202FPM - Sam Lee: hi\n"
              "5/1/25, 9:05 PM \u2013 Alex: hello\n");
    auto result = scanFolder(tmp.path(), DateOrder::dayFirst);
    ASSERT_EQ(result.sources.size(), 1u);
    const Source& s = result.sources[0];
    EXPECT_EQ(s.name, "Sam Lee");
    EXPECT_EQ(s.notes, std::vector<std::string>{"Ignored header line 1."});
    ASSERT_EQ(s.items.size(), 2u);
    EXPECT_EQ(s.items[0].date, *Calendar::makeDate(2025, 1, 5, 21, 4));
    EXPECT_EQ(s.items[1].sender, "Alex");
}

TEST(WhatsAppSource, AutomaticOrderUsesWhatTheDatesTell) {
    TempFolder tmp;
    tmp.write("a/_chat.txt", "[05/01/2025, 09:00:00] Sam: a\n[14/01/2025, 09:00:00] Sam: b\n");
    auto result = scanFolder(tmp.path());
    ASSERT_EQ(result.sources.size(), 1u);
    EXPECT_TRUE(result.sources[0].notes.empty());
    EXPECT_EQ(result.sources[0].items[0].date, *Calendar::makeDate(2025, 1, 5, 9, 0));

    TempFolder us;
    us.write("b/_chat.txt", "[05/01/2025, 09:00:00] Sam: a\n[01/14/2025, 09:00:00] Sam: b\n");
    auto monthFirst = scanFolder(us.path());
    ASSERT_EQ(monthFirst.sources.size(), 1u);
    const auto& items = monthFirst.sources[0].items;  // in date order
    EXPECT_EQ(items[0].date, *Calendar::makeDate(2025, 1, 14, 9, 0));
    EXPECT_EQ(items[1].date, *Calendar::makeDate(2025, 5, 1, 9, 0));
    EXPECT_EQ(items[1].position, 1);

    // Dates that could be either, but that only run forward as month/day.
    TempFolder forward;
    forward.write("c/_chat.txt",
                  "[3/4/25, 9:00:00 PM] Sam: a\n[3/9/25, 9:00:00 PM] Sam: b\n"
                  "[4/2/25, 9:00:00 PM] Sam: c\n");
    auto chronological = scanFolder(forward.path());
    ASSERT_EQ(chronological.sources.size(), 1u);
    EXPECT_EQ(chronological.sources[0].notes,
              std::vector<std::string>{
                  "The dates could be day/month or month/day; month first was chosen, because "
                  "the dates only make sense as month/day. Change Date order if they look wrong."});
    EXPECT_EQ(chronological.sources[0].items[0].date, *Calendar::makeDate(2025, 3, 4, 21, 0));
}

TEST(WhatsAppSource, BrokenChatIsSkippedWithTheParserReason) {
    TempFolder tmp;
    tmp.write("x/_chat.txt",
              "[05/01/2025, 09:00:00] Sam: a\n[05/01/2025, 09:01:00] Sam: b\n05/01/2025 "
              "Unsupported\n");
    tmp.write("x/photo.jpg", "p");
    auto result = scanFolder(tmp.path());
    EXPECT_TRUE(result.sources.empty());
    ASSERT_FALSE(result.skipped.empty());
    EXPECT_EQ(result.skipped[0], (SkippedFile{"x/_chat.txt",
                                              "Looks like a WhatsApp chat, but: Unsupported "
                                              "timestamp on line 3."}));
}

TEST(WhatsAppSource, TitlePrefixesAreDroppedFirstHitOnly) {
    EXPECT_EQ(withoutTitlePrefix("WhatsApp Chat with Sam"), "Sam");
    EXPECT_EQ(withoutTitlePrefix("WhatsApp Chat - Family"), "Family");
    EXPECT_EQ(withoutTitlePrefix("WhatsApp-Chat mit Oma"), "Oma");
    EXPECT_EQ(withoutTitlePrefix("Chat de WhatsApp con Ana"), "Ana");
    EXPECT_EQ(withoutTitlePrefix("WhatsApp Chat with WhatsApp Chat - x"), "WhatsApp Chat - x");
    EXPECT_EQ(withoutTitlePrefix("Sam"), "Sam");
}

TEST(WhatsAppSource, AttachmentExpressions) {
    EXPECT_EQ(attachmentName("see <attached: a b.jpg> here"), "a b.jpg");
    EXPECT_EQ(attachmentName("IMG-2025.jpg (file attached)"), "IMG-2025.jpg");
    EXPECT_EQ(attachmentName("IMG-2025.jpg (file attached)\n<attached: first.jpg>"), "first.jpg");
    EXPECT_FALSE(attachmentName("look: IMG.jpeg2 (file attached)"));
    EXPECT_FALSE(attachmentName(" IMG.jpg (file attached)"));
    EXPECT_FALSE(attachmentName("no attachment"));
}

std::string zippedChat() {
    return makeZip({
        {"__MACOSX/WhatsApp Chat with Sam Lee/._chat.txt", "\x05\x16\x07 resource fork", 0},
        {"WhatsApp Chat with Sam Lee/", "", 0},
        {"WhatsApp Chat with Sam Lee/_chat.txt", kChat, 8},
        {"WhatsApp Chat with Sam Lee/" + kPhotoName, kPhoto, 8},
    });
}

TEST(WhatsAppSource, ZippedChatScansToTheSameItems) {
    testing::ScopedCacheHome cache;
    TempFolder loose, zipped;
    loose.write("WhatsApp Chat with Sam Lee/_chat.txt", kChat);
    loose.write("WhatsApp Chat with Sam Lee/" + kPhotoName, kPhoto);
    std::string zipBytes = zippedChat();
    zipped.write("WhatsApp Chat with Sam Lee.zip", zipBytes);
    ::chmod(zipped.path().c_str(), 0555);  // a write into the folder would fail loudly
    auto before = folderFingerprint(zipped.path());

    auto a = scanFolder(loose.path());
    auto b = scanFolder(zipped.path());
    EXPECT_EQ(folderFingerprint(zipped.path()), before);
    ASSERT_EQ(b.sources.size(), 1u);
    EXPECT_TRUE(b.skipped.empty());
    const Source& s = b.sources[0];
    EXPECT_EQ(s.name, "Sam Lee");
    EXPECT_EQ(s.id, sha256Hex(zipBytes));
    EXPECT_EQ(s.files[0].path, "WhatsApp Chat with Sam Lee.zip");
    ASSERT_EQ(s.items.size(), a.sources[0].items.size());
    for (size_t i = 0; i < s.items.size(); ++i) {
        EXPECT_EQ(s.items[i].date, a.sources[0].items[i].date);
        EXPECT_EQ(s.items[i].sender, a.sources[0].items[i].sender);
        EXPECT_EQ(s.items[i].text, a.sources[0].items[i].text);
        EXPECT_EQ(s.items[i].position, a.sources[0].items[i].position);
        EXPECT_EQ(s.items[i].details().attachmentName,
                  a.sources[0].items[i].details().attachmentName);
        EXPECT_EQ(s.items[i].details().attachmentID, a.sources[0].items[i].details().attachmentID);
    }
    EXPECT_EQ(s.notes, a.sources[0].notes);

    // Unpacked into the private cache, one folder per archive.
    std::string folder = cache.path() + "/kinfolio/whatsapp/" + sha256Hex(zipBytes).substr(0, 16);
    std::string photo = folder + "/WhatsApp Chat with Sam Lee/" + kPhotoName;
    EXPECT_EQ(s.items[1].details().imageURL, photo);
    EXPECT_EQ(testing::readFile(photo), kPhoto);
    EXPECT_FALSE(fs::exists(folder + "/__MACOSX"));
    struct stat st {};
    ASSERT_EQ(::stat(folder.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    ASSERT_EQ(::stat((cache.path() + "/kinfolio").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);

    // A second scan reuses what is there.
    std::string marker = folder + "/kept.txt";
    { std::ofstream(marker) << "kept"; }
    auto again = scanFolder(zipped.path());
    ASSERT_EQ(again.sources.size(), 1u);
    EXPECT_TRUE(fs::exists(marker));
}

TEST(WhatsAppSource, PlantedLinkInTheCacheIsReplacedNotFollowed) {
    testing::ScopedCacheHome cache;
    TempFolder folder, elsewhere;
    std::string zipBytes = zippedChat();
    folder.write("chat.zip", zipBytes);
    std::string root = cache.path() + "/kinfolio/whatsapp";
    fs::create_directories(root);
    fs::permissions(cache.path() + "/kinfolio", fs::perms::owner_all, fs::perm_options::replace);
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::replace);
    fs::create_directory_symlink(elsewhere.path(), root + "/" + sha256Hex(zipBytes).substr(0, 16));
    auto result = scanFolder(folder.path());
    ASSERT_EQ(result.sources.size(), 1u);
    EXPECT_EQ(result.sources[0].name, "chat");
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST(WhatsAppSource, ZipsWithoutAReadableChatAreSkipped) {
    testing::ScopedCacheHome cache;
    TempFolder tmp;
    tmp.write("photos.zip", makeZip({{"a.jpg", "jpeg", 8}, {"__MACOSX/._x.txt", "fork", 0}}));
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string("[05/01/2025, 09:00:00] Sam: hi\n")) {
        utf16 += c;
        utf16 += '\0';
    }
    tmp.write("utf16.zip", makeZip({{"_chat.txt", utf16, 8}}));
    tmp.write("notes.zip", makeZip({{"notes.txt", "just notes\nnothing else\nreally\n", 8}}));
    tmp.write("broken.zip", "PK not really");
    auto result = scanFolder(tmp.path());
    EXPECT_TRUE(result.sources.empty());
    const std::string noChat =
        "ZIP without a chat export inside. Unzip it into the folder if it holds photos or "
        "documents.";
    EXPECT_EQ(result.skipped, (std::vector<SkippedFile>{
                                  {"broken.zip", noChat},
                                  {"notes.zip", noChat},
                                  {"photos.zip", noChat},
                                  {"utf16.zip", "Chat inside the ZIP is not UTF-8 text."},
                              }));
}

TEST(WhatsAppSource, ChatEntryPrefersTheRealChat) {
    auto zip = ZipArchive::fromBytes(makeZip(
        {{"__MACOSX/._chat.txt", "x", 0}, {"readme.txt", "r", 0}, {"sub/_chat.txt", "c", 0}}));
    EXPECT_EQ(chatEntry(zip)->path, "sub/_chat.txt");
    auto plain = ZipArchive::fromBytes(makeZip({{"a.jpg", "x", 0}, {"b.txt", "b", 0}}));
    EXPECT_EQ(chatEntry(plain)->path, "b.txt");
    auto none = ZipArchive::fromBytes(makeZip({{"a.jpg", "x", 0}}));
    EXPECT_FALSE(chatEntry(none));
}

TEST(WhatsAppSource, CommandLineJsonShowsTheChat) {
    testing::ScopedCacheHome cache;
    TempFolder tmp, config;
    std::string chat;
    for (int month = 1; month <= 3; ++month)
        for (int day = 10; day < 14; ++day)
            chat += "[" + std::to_string(day) + "/0" + std::to_string(month) +
                    "/2025, 09:00:00] Sam Lee: day " + std::to_string(day) + "\n";
    chat += "[14/03/2025, 09:04:00] Sam Lee: <attached: " + kPhotoName + ">\n";
    chat += "[14/03/2025, 09:05:00] Messages are end-to-end encrypted.\n";
    tmp.write("Sam/_chat.txt", chat);
    tmp.write("Sam/" + kPhotoName, kPhoto);
    std::string settings = config.write("settings.json", "{}");
    std::ostringstream out, err;
    int status = cli::run({"scan", tmp.path(), "--json", "--settings", settings}, out, err);
    ASSERT_EQ(status, 0) << err.str();
    Json json = Json::parse(out.str());
    ASSERT_EQ(json["sources"].size(), 1u);
    const Json& s = json["sources"][0];
    EXPECT_EQ(s["kind"], "whatsapp");
    EXPECT_EQ(s["name"], "Sam");
    EXPECT_EQ(s["detail"], "WhatsApp · 13 messages · Jan 2025 – Mar 2025");
    EXPECT_EQ(s["files"].size(), 2u);
    const Json& photo = s["items"][12];
    EXPECT_EQ(photo["attachmentName"], kPhotoName);
    EXPECT_EQ(photo["attachmentID"], sha256Hex(kPhoto));
    EXPECT_EQ(photo["imageURL"], tmp.path() + "/Sam/" + kPhotoName);
    EXPECT_EQ(s["items"][13]["sender"], "");
    EXPECT_TRUE(json["skipped"].empty());
}

// An attachment whose name sorts before its chat is still claimed by the chat
// rather than handled first as a loose file.
TEST(WhatsAppSource, AttachmentsSortingBeforeTheChatAreClaimedByIt) {
    TempFolder tmp;
    tmp.write("trip/Sam.txt",
              "[05/01/2025, 09:00:00] Sam Lee: <attached: IMG_0001.jpg>\n"
              "[05/01/2025, 09:01:00] Alex Morgan: Lovely\n");
    tmp.write("trip/IMG_0001.jpg", kPhoto);
    ScanResult r = scanFolder(tmp.path());
    EXPECT_TRUE(r.skipped.empty()) << r.skipped.front().path << ": " << r.skipped.front().reason;
    ASSERT_EQ(r.sources.size(), 1u);
    ASSERT_EQ(r.sources[0].files.size(), 2u);
    EXPECT_EQ(r.sources[0].files[1].path, "trip/IMG_0001.jpg");
}

TEST(WhatsAppSource, AttachmentNamesNeverReachOutsideTheExport) {
    TempFolder tmp;
    tmp.write("outside.jpg", kPhoto);
    tmp.write("chat/_chat.txt",
              "[05/01/2025, 09:00:00] Sam Lee: <attached: ../outside.jpg>\n"
              "[05/01/2025, 09:01:00] Alex Morgan: Hi\n");
    ScanResult r = scanFolder(tmp.path());
    const Source* chat = findKind(r, SourceKind::whatsapp);
    ASSERT_NE(chat, nullptr);
    EXPECT_EQ(chat->files.size(), 1u);
    EXPECT_FALSE(chat->items[0].details().imageURL.has_value());
    // The file outside is left to the scan, which lists it on its own.
    ASSERT_EQ(r.skipped.size(), 1u);
    EXPECT_EQ(r.skipped[0].path, "outside.jpg");
}

}  // namespace
}  // namespace kinfolio::Scanner
