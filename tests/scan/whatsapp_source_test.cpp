#include "scan/whatsapp_source.h"

#include <filesystem>

#include "example/zip_writer.h"
#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

namespace fs = std::filesystem;
using testing::scanFiles;
using testing::shown;

const std::string kPhotoName = "00000003-PHOTO-2025-01-05-09-04-00.jpg";
const std::string kPhoto = "\xFF\xD8\xFF\xE0 not really a jpeg";
const std::string kChat =
    "[05/01/2025, 09:00:00] Alex Morgan: Did you land safely?\n"
    "[05/01/2025, 09:04:00] Sam Lee: <attached: " +
    kPhotoName +
    ">\n"
    "[05/01/2025, 09:05:00] Sam Lee: Bring the blue scarf\n"
    "it's cold here.\n";

std::string zippedChat() {
    return ZipWriter::archive({
        {"__MACOSX/WhatsApp Chat with Sam Lee/._chat.txt", "\x05\x16\x07 resource fork", false},
        {"WhatsApp Chat with Sam Lee/", "", false},
        {"WhatsApp Chat with Sam Lee/_chat.txt", kChat},
        {"WhatsApp Chat with Sam Lee/" + kPhotoName, kPhoto},
    });
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

}  // namespace
}  // namespace kinfolio::Scanner
