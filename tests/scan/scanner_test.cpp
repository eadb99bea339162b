#include "scan/scanner.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <sstream>
#include <thread>

#include "cli/cli.h"
#include "cli/json_output.h"
#include "example/example_folder.h"
#include "model/calendar.h"
#include "model/parallel.h"
#include "scan/scan_context.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::scanFiles;
using testing::shown;
using testing::TempFolder;

// Hidden files and folders are skipped, links never followed, and the rest
// sorted like the file manager: case aside, digit runs by their value.
TEST(ListFiles, SortsLikeTheFileManagerAndSkipsHiddenEntriesAndLinks) {
    TempFolder dir, outside;
    for (const char* name : {"IMG_10.jpg", "img_2.jpg", "B.txt", "a.txt", "IMG_1.jpg", "z/c.txt",
                             ".hidden.txt", ".git/config", "z/.DS_Store"})
        dir.write(name, "x");
    std::string secret = outside.write("secret.txt", "x");
    ASSERT_EQ(::symlink(secret.c_str(), (dir.path() + "/link.txt").c_str()), 0);
    ASSERT_EQ(::symlink(outside.path().c_str(), (dir.path() + "/linked-folder").c_str()), 0);
    std::vector<std::string> listed;
    for (const auto& path : listFiles(dir.path() + "/"))
        listed.push_back(path.substr(dir.path().size() + 1));
    EXPECT_EQ(listed, (std::vector<std::string>{"a.txt", "B.txt", "IMG_1.jpg", "img_2.jpg",
                                                "IMG_10.jpg", "z/c.txt"}));
}

// Links, pipes and devices are listed as not read and never opened: a link
// never leads out of the folder, a pipe never makes the scan wait, a loop
// never hangs it, and a folder linked into an export gives no attachment.
TEST(Scan, LinksPipesAndDevicesAreNotReadAndSaySo) {
    TempFolder dir, outside;
    outside.write("p.jpg", "not read");
    std::string secret = outside.write("secret.txt", "[05/01/2025, 09:00:00] Sam: secret\n");
    std::string root = dir.path();
    dir.write("chat/_chat.txt", "[05/01/2025, 09:00:00] Sam: <attached: media/p.jpg>\n");
    ASSERT_EQ(::symlink(outside.path().c_str(), (root + "/chat/media").c_str()), 0);
    ASSERT_EQ(::symlink(secret.c_str(), (root + "/link.txt").c_str()), 0);
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

    ScanResult r = scanFiles(dir, {}, DateOrder::dayFirst);
    EXPECT_EQ(r.skipped, expected);
    ASSERT_EQ(r.sources.size(), 1u);
    EXPECT_EQ(r.sources[0].files.size(), 1u);
    EXPECT_EQ(r.sources[0].items.at(0).details().attachmentName, "media/p.jpg");
    EXPECT_FALSE(r.sources[0].items[0].details().imageURL);
}

// One file over the limit: the listing stops there, and each file listed
// says it is empty.
TEST(Scan, StopsAtTheFileLimitAndSaysSo) {
    TempFolder dir;
    for (size_t i = 0; i <= kMaxFiles; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "f%06zu.txt", i);
        dir.write(name, "");
    }
    EXPECT_EQ(listFiles(dir.path()).size(), kMaxFiles);
    ScanResult r = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_TRUE(r.sources.empty());
    ASSERT_EQ(r.skipped.size(), kMaxFiles + 1);
    const std::string empty = "The file is empty. Copy it again from where it came from.";
    EXPECT_EQ(r.skipped.front(), (SkippedFile{"f000000.txt", empty}));
    EXPECT_EQ(r.skipped[kMaxFiles - 1], (SkippedFile{"f019999.txt", empty}));
    // "…" sorts after every ASCII path.
    EXPECT_EQ(r.skipped.back(), (SkippedFile{"…", "Only the first 20000 files were read."}));
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

// A folder of files Kinfolio cannot use: each must come back with the reason
// that tells the user what to do, sorted by path, the hidden ones never listed.
TEST(Scan, GivesEachUnusableFileItsReason) {
    const std::string telegramHtml =
        "<!DOCTYPE html><html><head><title>Exported Data</title></head><body>"
        "<div class=\"page_header\">Telegram</div></body></html>";
    TempFolder dir;
    ScanResult r =
        scanFiles(dir, {{".hidden.txt", "[05/01/2025, 09:00:00] A: hi\n"},
                        {".private/chat.txt", "x"},
                        {"notes.docx", "PK\x03\x04"},
                        {"a/ChatExport.html", telegramHtml},
                        {"b/ChatExport-copy.html", telegramHtml},
                        {"inbox/message_1.html", "<html><body>Messages</body></html>"},
                        {"page.html", "<html><body>My holiday page</body></html>"},
                        {"data.json", R"({"name": "something else", "items": []})"},
                        {"notes.txt", "Shopping list\nmilk\neggs\n"},
                        {"utf16.txt", std::string("\xFF\xFEh\0i\0\n\0", 8)},
                        {"binary.txt", std::string("\xFF\xFE\x00\xD8\x41\x00\xC3\x28", 8)},
                        {"list.csv", "name,amount\nmilk,2\n"}});
    EXPECT_EQ(r.folder, dir.path());
    EXPECT_EQ(shown(r),
              (std::vector<std::string>{
                  "a/ChatExport.html | Telegram HTML export. Export the chat again and choose "
                  "\u201cMachine-readable JSON\u201d.",
                  "b/ChatExport-copy.html | Same file as a/ChatExport.html.",
                  "binary.txt | Text file in an unknown encoding.",
                  "data.json | Data file that is not a Telegram, Messenger or Instagram export.",
                  "inbox/message_1.html | Messenger/Instagram HTML download. Request it again and "
                  "choose the JSON format.",
                  "list.csv | Spreadsheet without date, sender and text columns.",
                  "notes.docx | Not a file type Kinfolio reads.",
                  "notes.txt | Text file that is not a chat export.",
                  "page.html | Web page; Kinfolio does not read HTML.",
                  "utf16.txt | Text file that is not a chat export.",
              }));
}

// A chat large enough to be read in pieces, with what a piece boundary could
// break: a header line, continuation lines, invisible marks and attachments.
std::string largeChat(size_t messages, size_t badLine = 0) {
    std::string chat = "Messages and calls are end-to-end encrypted.\n";
    Instant newYear = *Calendar::makeDate(2023, 1, 1);
    for (size_t i = 0; i < messages; ++i) {
        // 200 messages a day, one every seven minutes, through 2023.
        Instant sent = newYear + 86400.0 * (i / 200) + 420.0 * (i % 200) + i % 60;
        if (i % 11 == 3) chat += "\u200E";
        chat += "[" + Calendar::format(sent, "dd/MM/yyyy, HH:mm:ss") + "] ";
        chat += i % 2 ? "Sam Lee: " : "Alex: ";
        chat += "message number " + std::to_string(i);
        if (i % 7 == 0) chat += "\nand a second line\n\nafter an empty one";
        if (i % 5000 == 1) chat += "\n\u200E<attached: 00000001-PHOTO.jpg>";
        chat += '\n';
        if (badLine && i == badLine) chat += "2023-13-45 broken: stamp\n";
    }
    return chat;
}

std::string scanJson(const std::string& folder, unsigned threads) {
    Parallel::setThreads(threads);
    std::ostringstream out;
    cli::writeJson(out, scan(folder, DateOrder::automatic, "Europe/London"));
    Parallel::setThreads(0);
    return out.str();
}

// The same folder gives the same bytes, scanned and exported, however many
// threads read it.
TEST(Scan, OneThreadAndManyReadAndExportAFolderTheSame) {
    testing::TempFolder temp;
    std::string folder = temp.path() + "/materials";
    ExampleFolder::write(folder);
    constexpr size_t kMessages = 40000;
    std::string chat = largeChat(kMessages);
    // Two pieces at least, and large enough to be fingerprinted while read.
    ASSERT_GT(chat.size(), 2u << 20);
    temp.write("materials/Big/_chat.txt", chat);
    temp.write("materials/Big/00000001-PHOTO.jpg", "not really a photo");
    temp.write("materials/Broken/_chat.txt", largeChat(kMessages, 35000));
    // Copies are known by their fingerprint, whether they read or not.
    temp.write("materials/Copy/_chat.txt", chat);
    temp.write("materials/CopyBroken/_chat.txt", largeChat(kMessages, 35000));

    std::string one = scanJson(folder, 1);
    EXPECT_EQ(scanJson(folder, 2), one);
    EXPECT_EQ(scanJson(folder, 7), one);
    // And so does the PDF made from it.
    testing::ScopedHome home;
    auto exported = [&](unsigned threads) {
        Parallel::setThreads(threads);
        std::string target = temp.path() + "/out.pdf";
        std::ostringstream out, err;
        EXPECT_EQ(cli::run({"export", folder, "-o", target}, out, err), 0) << err.str();
        Parallel::setThreads(0);
        return testing::readFile(target);
    };
    EXPECT_EQ(exported(7), exported(1));

    // The whole reading, seen from one place: every message, its line number
    // counted over the whole file, and the trouble named at its own line.
    auto json = Json::parse(one);
    const Json* big = nullptr;
    for (const auto& s : json["sources"])
        if (s["name"] == "Big") big = &s;
    ASSERT_TRUE(big);
    const auto& items = (*big)["items"];
    ASSERT_EQ(items.size(), kMessages);
    EXPECT_EQ(items[0]["id"], (*big)["id"].get<std::string>() + ":2");
    EXPECT_EQ(items[0]["position"], 2);
    EXPECT_EQ(items[1]["position"], 6);
    EXPECT_EQ(items[7]["text"], "message number 7\nand a second line\n\nafter an empty one");
    int64_t lines = 1 + kMessages + 3 * ((kMessages + 6) / 7) + kMessages / 5000;
    EXPECT_EQ(items.back()["position"], lines);
    EXPECT_EQ((*big)["notes"][0], "Ignored header line 1.");
    int64_t badAt = 1 + 35001 + 3 * ((35000 + 7) / 7) + 35000 / 5000 + 1;
    std::map<std::string, std::string> skipped;
    for (const auto& s : json["skipped"])
        skipped[s["path"]] = s["reason"];
    EXPECT_EQ(skipped["Broken/_chat.txt"],
              "Looks like a WhatsApp chat, but: Unsupported timestamp on line " +
                  std::to_string(badAt) + ".");
    EXPECT_EQ(skipped["Copy/_chat.txt"], "Same file as Big/_chat.txt.");
    EXPECT_EQ(skipped["CopyBroken/_chat.txt"], "Same file as Broken/_chat.txt.");
}

}  // namespace
}  // namespace kinfolio::Scanner
