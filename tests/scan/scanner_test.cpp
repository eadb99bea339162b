#include "scan/scanner.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>

#include "model/calendar.h"
#include "scan/scan_context.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

std::vector<std::string> relative(const TempFolder& dir, const std::vector<std::string>& paths) {
    std::vector<std::string> out;
    for (const auto& p : paths)
        out.push_back(p.substr(dir.path().size() + 1));
    return out;
}

TEST(ListFiles, SkipsHiddenEntriesAndNeverFollowsLinks) {
    TempFolder dir;
    dir.write("a.txt", "x");
    dir.write(".hidden.txt", "x");
    dir.write(".git/config", "x");
    dir.write("sub/.DS_Store", "x");
    dir.write("sub/b.txt", "x");
    TempFolder outside;
    outside.write("secret.txt", "x");
    ASSERT_EQ(
        ::symlink((outside.path() + "/secret.txt").c_str(), (dir.path() + "/link.txt").c_str()), 0);
    ASSERT_EQ(::symlink(outside.path().c_str(), (dir.path() + "/linked-folder").c_str()), 0);
    EXPECT_EQ(relative(dir, listFiles(dir.path())),
              (std::vector<std::string>{"a.txt", "sub/b.txt"}));
}

TEST(ListFiles, SortsLikeTheFileManager) {
    TempFolder dir;
    for (const char* name : {"IMG_10.jpg", "img_2.jpg", "B.txt", "a.txt", "IMG_1.jpg", "z/c.txt"})
        dir.write(name, "x");
    EXPECT_EQ(relative(dir, listFiles(dir.path() + "/")),
              (std::vector<std::string>{"a.txt", "B.txt", "IMG_1.jpg", "img_2.jpg", "IMG_10.jpg",
                                        "z/c.txt"}));
}

// Links, pipes and devices are listed as not read and never opened: a link
// never leads out of the folder, a pipe never makes the scan wait, a loop
// never hangs it, and a folder linked into an export gives no attachment.
TEST(Scan, LinksPipesAndDevicesAreNotReadAndSaySo) {
    TempFolder dir, outside;
    outside.write("p.jpg", "not read");
    outside.write("secret.txt", "[05/01/2025, 09:00:00] Sam: secret\n");
    dir.write("chat/_chat.txt", "[05/01/2025, 09:00:00] Sam: <attached: media/p.jpg>\n");
    std::string root = dir.path();
    ASSERT_EQ(::symlink(outside.path().c_str(), (root + "/chat/media").c_str()), 0);
    ASSERT_EQ(::symlink((outside.path() + "/secret.txt").c_str(), (root + "/link.txt").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", (root + "/zero.jpg").c_str()), 0);
    ASSERT_EQ(::symlink((root + "/loop.txt").c_str(), (root + "/loop.txt").c_str()), 0);
    ASSERT_EQ(::mkfifo((root + "/pipe.txt").c_str(), 0600), 0);
    std::vector<SkippedFile> expected = {{"chat/media", kLinkReason},
                                         {"link.txt", kLinkReason},
                                         {"loop.txt", kLinkReason},
                                         {"pipe.txt", kSpecialReason},
                                         {"zero.jpg", kLinkReason}};
    // A device node needs a privilege that tests may not have.
    if (::mknod((root + "/null").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0)
        expected.insert(expected.begin() + 3, {"null", kSpecialReason});
    std::string before = testing::folderFingerprint(root);

    ScanResult r = scan(root, DateOrder::dayFirst, "UTC");
    EXPECT_EQ(r.skipped, expected);
    ASSERT_EQ(r.sources.size(), 1u);
    ASSERT_EQ(r.sources[0].items.size(), 1u);
    EXPECT_EQ(r.sources[0].items[0].details().attachmentName, "media/p.jpg");
    EXPECT_FALSE(r.sources[0].items[0].details().imageURL);
    EXPECT_EQ(r.sources[0].files.size(), 1u);
    EXPECT_EQ(testing::folderFingerprint(root), before);
}

// A hundred thousand empty files in one folder: the listing stops at the
// limit, and each file says it is empty.
TEST(Scan, AHundredThousandEmptyFilesStopAtTheLimit) {
    TempFolder dir;
    for (int i = 0; i < 100000; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "/f%06d.txt", i);
        int fd = ::open((dir.path() + name).c_str(), O_CREAT | O_WRONLY, 0600);
        ASSERT_GE(fd, 0);
        ::close(fd);
    }
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(r.sources.empty());
    ASSERT_EQ(r.skipped.size(), kMaxFiles + 1);
    const std::string empty = "The file is empty. Copy it again from where it came from.";
    EXPECT_EQ(r.skipped.front(), (SkippedFile{"f000000.txt", empty}));
    EXPECT_EQ(r.skipped[kMaxFiles - 1], (SkippedFile{"f019999.txt", empty}));
    EXPECT_EQ(r.skipped.back().reason, "Only the first 20000 files were read.");
}

// Another program cutting a chat short while it is scanned: the file is
// skipped with a sentence, and the process lives on.
TEST(Scan, AChatCutShortWhileItIsScannedIsSkippedNotACrash) {
    TempFolder dir;
    std::string chat;
    for (int i = 0; chat.size() < 8'000'000; ++i)
        chat += "[05/01/2025, 09:" + std::to_string(10 + i % 50) + ":00] Sam: message " +
                std::to_string(i) + "\n";
    std::string path = dir.write("_chat.txt", chat);
    auto started = std::chrono::steady_clock::now();
    ASSERT_EQ(scan(dir.path(), DateOrder::dayFirst, "UTC").sources.size(), 1u);
    auto whole = std::chrono::steady_clock::now() - started;

    int skippedAsChanged = 0;
    for (int round = 0; round < 3; ++round) {
        dir.write("_chat.txt", chat);
        std::thread cutter([&] {
            std::this_thread::sleep_for(whole / 3);
            ASSERT_EQ(::truncate(path.c_str(), 4096 * (round + 1)), 0);
        });
        ScanResult r = scan(dir.path(), DateOrder::dayFirst, "UTC");
        cutter.join();
        for (const auto& s : r.skipped)
            if (s == SkippedFile{"_chat.txt", kChangedWhileRead}) ++skippedAsChanged;
    }
    EXPECT_GE(skippedAsChanged, 1);
}

TEST(Scan, StopsAtTheFileLimitAndSaysSo) {
    TempFolder dir;
    for (size_t i = 0; i <= kMaxFiles; ++i)
        dir.write("f" + std::to_string(i) + ".docx", "");
    EXPECT_EQ(listFiles(dir.path()).size(), kMaxFiles);
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    ASSERT_FALSE(r.skipped.empty());
    EXPECT_EQ(r.skipped.back().path, "…");  // sorts after every ASCII path
    EXPECT_EQ(r.skipped.back().reason, "Only the first 20000 files were read.");
}

// A folder of files Kinfolio cannot use: each must come back with the reason
// that tells the user what to do, sorted by path, the hidden ones never listed.
TEST(Scan, GivesEachUnusableFileItsReason) {
    TempFolder dir;
    const std::string telegramHtml =
        "<!DOCTYPE html><html><head><title>Exported Data</title></head><body>"
        "<div class=\"page_header\">Telegram</div></body></html>";
    dir.write(".hidden.txt", "[05/01/2025, 09:00:00] A: hi\n");
    dir.write(".private/chat.txt", "x");
    dir.write("notes.docx", "PK\x03\x04");
    dir.write("a/ChatExport.html", telegramHtml);
    dir.write("b/ChatExport-copy.html", telegramHtml);
    dir.write("inbox/message_1.html", "<html><body>Messages</body></html>");
    dir.write("page.html", "<html><body>My holiday page</body></html>");
    dir.write("data.json", R"({"name": "something else", "items": []})");
    dir.write("notes.txt", "Shopping list\nmilk\neggs\n");
    dir.write("utf16.txt", std::string("\xFF\xFEh\0i\0\n\0", 8));
    dir.write("binary.txt", std::string("\xFF\xFE\x00\xD8\x41\x00\xC3\x28", 8));
    dir.write("list.csv", "name,amount\nmilk,2\n");
    std::string before = testing::folderFingerprint(dir.path());

    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");

    EXPECT_TRUE(r.sources.empty());
    std::vector<SkippedFile> expected = {
        {"a/ChatExport.html",
         "Telegram HTML export. Export the chat again and choose \u201cMachine-readable "
         "JSON\u201d."},
        {"b/ChatExport-copy.html", "Same file as a/ChatExport.html."},
        {"binary.txt", "Text file in an unknown encoding."},
        {"data.json", "Data file that is not a Telegram, Messenger or Instagram export."},
        {"inbox/message_1.html",
         "Messenger/Instagram HTML download. Request it again and choose the JSON format."},
        {"list.csv", "Spreadsheet without date, sender and text columns."},
        {"notes.docx", "Not a file type Kinfolio reads."},
        {"notes.txt", "Text file that is not a chat export."},
        {"page.html", "Web page; Kinfolio does not read HTML."},
        {"utf16.txt", "Text file that is not a chat export."},
    };
    EXPECT_EQ(r.skipped, expected);
    EXPECT_EQ(r.folder, dir.path());
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
}

// A text file is read as what it starts with: an e-mail by its headers or a
// mailbox line, a chat by its first message line, whatever it quotes below.
TEST(Scan, RoutesAFileByWhatItStartsWith) {
    TempFolder dir;
    dir.write(
        "booking.txt",
        "05/01/2025, 09:00 - Sam: look what came\nFrom: Air <a@b.c>\n"
        "Date: Sun, 5 Jan 2025 08:00\nSubject: Your booking\n05/01/2025, 09:01 - Alex: great\n");
    dir.write("mail.txt",
              "From: Sam <sam@example.com>\nTo: Alex <alex@example.com>\n"
              "Date: Sun, 5 Jan 2025 08:00:00 +0000\nSubject: Flights\n\nBooked.\n");
    dir.write("line.txt", "2025/06/14(Sat)\n09:15\tSam Lee\tHi\n");
    // JSON saved with a byte-order mark, as some editors and tools write it.
    const std::string bom = "\xEF\xBB\xBF";
    dir.write("telegram/result.json",
              bom + R"({"name": "Sam", "type": "personal_chat", "id": 1, "messages": [
                  {"id": 1, "type": "message", "date": "2025-01-05T09:00:00",
                   "from": "Sam", "text": "hi"}]})");
    dir.write("messenger/message_1.json",
              bom + R"({"participants": [{"name": "Sam"}, {"name": "Alex"}], "title": "Sam",
                  "messages": [{"sender_name": "Sam", "timestamp_ms": 1736067600000,
                                "content": "hi"}]})");
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(r.skipped.empty()) << r.skipped.front().path << ": " << r.skipped.front().reason;
    std::map<std::string, SourceKind> kinds;
    for (const auto& source : r.sources)
        kinds[source.files.at(0).path] = source.kind;
    std::map<std::string, SourceKind> expected = {
        {"booking.txt", SourceKind::whatsapp},
        {"mail.txt", SourceKind::emails},
        {"line.txt", SourceKind::line},
        {"telegram/result.json", SourceKind::telegram},
        {"messenger/message_1.json", SourceKind::messenger}};
    EXPECT_EQ(kinds, expected);
}

TEST(Scan, AnEmptyFolderGivesNothing) {
    TempFolder dir;
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(r.sources.empty());
    EXPECT_TRUE(r.skipped.empty());
}

TEST(Scan, ReportsProgressForEveryListedFile) {
    TempFolder dir;
    dir.write("a.docx", "");
    dir.write("b.docx", "");
    std::vector<std::pair<size_t, size_t>> calls;
    scan(dir.path(), DateOrder::automatic, "UTC", false,
         [&](size_t done, size_t total) { calls.emplace_back(done, total); });
    EXPECT_EQ(calls, (std::vector<std::pair<size_t, size_t>>{{1, 2}, {2, 2}}));
}

TEST(Sha256, MatchesKnownDigests) {
    EXPECT_EQ(sha256Hex(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

Evidence item(ItemKind kind, std::string sender, int day) {
    Evidence e;
    e.kind = kind;
    e.sender = std::move(sender);
    e.date = *Calendar::makeDate(2025, 1, day);
    return e;
}

TEST(ChatSource, DetailCountsMessagesWithASenderAndCalls) {
    FileRecord file{"chat.txt", "abc", 10};
    Source s = chatSource(SourceKind::whatsapp, file, {},
                          {item(ItemKind::call, "Sam", 3), item(ItemKind::message, "Sam", 2),
                           item(ItemKind::message, "", 1)},
                          "Sam", {"note"});
    EXPECT_EQ(s.id, "abc");
    EXPECT_EQ(s.detail, "WhatsApp · 1 message · 1 call · Jan 2025");
    EXPECT_EQ(s.notes, std::vector<std::string>{"note"});
    // Items come out in date order.
    EXPECT_EQ(s.items.front().sender, "");
    EXPECT_EQ(s.items.back().kind, ItemKind::call);

    Source csv = chatSource(SourceKind::chatCSV, file, {{"p.jpg", "def", 3}},
                            {item(ItemKind::message, "A", 1), item(ItemKind::message, "B", 1),
                             item(ItemKind::call, "A", 1), item(ItemKind::call, "A", 1)},
                            "chat", {});
    EXPECT_EQ(csv.detail, "2 messages · 2 calls · Jan 2025");
    ASSERT_EQ(csv.files.size(), 2u);
    EXPECT_EQ(csv.files[0].path, "chat.txt");
}

TEST(ChatSource, NamesFallBackToTheFirstTwoSenders) {
    FileRecord file{"x", "h", 1};
    std::vector<Evidence> items = {item(ItemKind::message, "Sam Lee", 1),
                                   item(ItemKind::message, "Alex Morgan", 2),
                                   item(ItemKind::message, "Jo", 3)};
    for (const char* name : {"messages", "MESSAGES", "_chat", ""})
        EXPECT_EQ(chatSource(SourceKind::line, file, {}, items, name, {}).name,
                  "Sam Lee & Alex Morgan")
            << name;
    EXPECT_EQ(chatSource(SourceKind::line, file, {}, {items[0]}, "_chat", {}).name, "Sam Lee");
    EXPECT_EQ(chatSource(SourceKind::line, file, {}, {}, "_chat", {}).name, "");
    EXPECT_EQ(chatSource(SourceKind::line, file, {}, items, "Trip chat", {}).name, "Trip chat");
}

}  // namespace
}  // namespace kinfolio::Scanner
