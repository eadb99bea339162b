#include "example/example_folder.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "example/example_parts.h"
#include "model/files.h"

namespace kinfolio::ExampleFolder {

namespace fs = std::filesystem;

namespace {

// What write() leaves in a folder, so that telling the example apart never
// draws its photos or packs its archive just to compare. The texts carry
// their size and CRC-32; pictures, documents, the video and the archive only
// have to be there, as their bytes follow the installed cairo, zlib and
// FFmpeg. Change this table with the example: its test writes the example
// and checks every line of it.
struct WrittenFile {
    std::string_view path;
    int64_t bytes;  // -1: only has to be there
    uint32_t crc32;
};

constexpr WrittenFile kWritten[] = {
    {"Documents/E-ticket NS4KQ2.pdf", -1, 0},
    {"Documents/Tenancy agreement - 12 Elm Road.pdf", -1, 0},
    {"Emails/Booking confirmation.eml", 630, 0xf9c7eab3},
    {"Emails/Letters.mbox", 1241, 0x38c342dd},
    {"Photos/PHOTO-2025-03-22-16-05-31.jpg", -1, 0},
    {"Photos/PXL_20240816_184802.jpg", -1, 0},
    {"Photos/PXL_20241228_114510.jpg", -1, 0},
    {"Quillory - Jonas Berg/attachments/IMG_2231.png", -1, 0},
    {"Quillory - Jonas Berg/messages.csv", 576, 0x638d519a},
    {"Quillory - Jonas Berg/verification.txt", 135, 0x6a98ef07},
    {"Screenshots/Screenshot 2025-02-14 at 21.30.00.png", -1, 0},
    {"Screenshots/Screenshot 2025-04-02 at 08.12.45.png", -1, 0},
    {"Telegram Export 2025-04-20/photos/photo_1@16-08-2024_20-15-07.png", -1, 0},
    {"Telegram Export 2025-04-20/result.json", 3711, 0x3b925d9b},
    {"Text messages/SMS with Jonas.csv", 419, 0xa186f77e},
    {"Videos/VID_20240816_190512.mp4", -1, 0},
    {"WhatsApp Chat - Jonas Berg.zip", -1, 0},
    {"WhatsApp Chat with Grace Okafor.txt", 874, 0x2cbb5f54},
    {"[LINE] Chat with Jonas Berg.txt", 509, 0x337a63c7},
    {"facebook-mayaokafor-2025-04-20/your_facebook_activity/messages/inbox/"
     "jonasberg_10158912345/message_1.json",
     1248, 0x5e85f78d},
    {"instagram-mayaokafor-2025-04-20/your_instagram_activity/messages/inbox/"
     "jonas.berg_17841400234567/message_1.json",
     1079, 0x45af7e93},
};

}  // namespace

Files files() {
    Files out;
    addWhatsApp(out);
    addTelegram(out);
    addMeta(out);
    addLine(out);
    addSpreadsheets(out);
    addEmails(out);
    addPhotos(out);
    addVideos(out);
    addDocuments(out);
    std::sort(out.begin(), out.end());
    return out;
}

void checkTarget(const std::string& folder) {
    std::error_code ec;
    if (fs::exists(folder, ec)) {
        if (!fs::is_directory(folder, ec))
            throw EvidenceError::invalid(folder +
                                         " is a file, not a folder. Choose an empty or new "
                                         "folder for the example.");
        if (!fs::is_empty(folder, ec) || ec)
            throw EvidenceError::invalid("The folder " + folder +
                                         " is not empty. Choose an empty or new folder for the "
                                         "example, so that none of your own files is mixed in.");
    }
}

void write(const std::string& folder) {
    checkTarget(folder);
    // Everything is made in memory first, so a failure leaves nothing half written.
    Files all = files();
    makeDirectories(folder);
    for (const auto& [path, bytes] : all) {
        fs::path target = fs::path(folder) / path;
        makeDirectories(target.parent_path().string());
        writeFileAtomically(target.string(), bytes);
    }
}

bool holdsExample(const std::string& folder) {
    for (const auto& known : kWritten) {
        auto file = MappedFile::open((fs::path(folder) / known.path).string());
        if (!file) return false;
        if (known.bytes < 0) continue;
        std::string_view bytes = file->bytes();
        if (static_cast<int64_t>(bytes.size()) != known.bytes ||
            crc32(0, reinterpret_cast<const Bytef*>(bytes.data()),
                  static_cast<uInt>(bytes.size())) != known.crc32)
            return false;
    }
    return true;
}

}  // namespace kinfolio::ExampleFolder
