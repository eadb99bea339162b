#include "media/zip_archive.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "example/zip_writer.h"
#include "support/evidence_error.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;
using ZipWriter::archive;

TEST(ZipArchive, RefusesWhatIsNoZipOrHasABrokenDirectory) {
    std::string zip = archive({{"a.txt", "hello", false}, {"b.txt", "world", false}});
    size_t endAt = zip.size() - 22, central = zip.find("PK\x01\x02");
    size_t second = zip.find("PK\x01\x02", central + 4);
    auto changed = [&](size_t at, char value, size_t at2 = 0, char value2 = 0) {
        std::string bytes = zip;
        bytes[at] = value;
        if (at2) bytes[at2] = value2;
        return bytes;
    };
    std::string random;
    for (int i = 0; i < 5000; ++i)
        random += static_cast<char>((i * 7919 + 13) % 251);
    const std::pair<const char*, std::string> cases[] = {
        {"too short", std::string(21, '\0')},
        {"random bytes", random},
        // The end record one byte too far back, behind a comment longer than allowed.
        {"end record too far back", archive({{"a.txt", "x", false}}) + std::string(65536, 'c')},
        {"cut in the directory", zip.substr(0, endAt - 30) + zip.substr(endAt)},
        {"three entries, two records", changed(endAt + 10, 3)},
        {"directory far beyond the file", changed(endAt + 16, '\xF0', endAt + 19, '\x7F')},
        {"wrong record signature", changed(central + 2, 9)},
        {"name running past the end", changed(second + 28, '\xFF')},
    };
    for (const auto& [name, bytes] : cases)
        EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(bytes); }),
                  "Not a ZIP file Kinfolio can read.")
            << name;
}

// What an entry unpacks to, or the sentence that says why it cannot.
TEST(ZipArchive, ContentsAreExactlyTheDeclaredSizeOrRefused) {
    const std::string fox = "the quick brown fox jumps over the lazy dog";
    std::string corrupt = archive({{"a.txt", std::string(1000, 'a') + "tail"}});
    corrupt[30 + 5] = corrupt[30 + 6] = '\xFF';
    std::string badLocal = archive({{"a.txt", "hello", false}});
    badLocal[1] = 'X';
    // Name, archive, what its first entry unpacks to.
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"Latin-1 name repaired", archive({{"caf\xE9.txt", "coffee"}}), "coffee"},
        {"stored entry ignores its recorded size",
         archive({{.path = "a.txt", .data = "hello", .deflate = false, .declaredSize = 99}}),
         "hello"},
        {"deflate stream longer than declared is cut",
         archive({{.path = "a.txt", .data = fox, .declaredSize = 9}}), "the quick"},
        {"size 0: nothing is decoded",
         archive({{.path = "a.txt", .data = "garbage", .rawMethod = 8, .declaredSize = 0}}), ""},
        {"deflate stream shorter than declared",
         archive({{.path = "a.txt", .data = fox, .declaredSize = 100}}), "Could not unpack a.txt."},
        {"corrupt deflate stream", corrupt, "Could not unpack a.txt."},
        {"local header signature wrong", badLocal, "Could not unpack a.txt."},
        // 3 GiB from a few bytes is more than 1,000 times the input: refused
        // before anything is allocated.
        {"absurd declared size",
         archive({{.path = "a.txt", .data = "abc", .declaredSize = 0xC0000000u}}),
         "Could not unpack a.txt."},
    };
    for (const auto& [name, bytes, contents] : cases) {
        SCOPED_TRACE(name);
        auto zip = ZipArchive::fromBytes(bytes);
        std::string got;
        std::string error = errorOf([&] { got = zip.contents(zip.entries().at(0)); });
        EXPECT_EQ(error == "(no error)" ? got : error, contents);
    }
    for (uint16_t method : {12, 14, 99}) {
        auto zip = ZipArchive::fromBytes(
            archive({{.path = "x/data.bin", .data = "payload", .rawMethod = method}}));
        EXPECT_EQ(errorOf([&] { zip.contents(zip.entries()[0]); }),
                  "x/data.bin uses a ZIP compression Kinfolio does not read.");
    }
    EXPECT_EQ(ZipArchive::fromBytes(archive({{"caf\xE9.txt", "c"}})).entries()[0].path,
              "caf\uFFFD.txt");
    // An entry whose local header lies past the end or runs beyond it.
    std::string zip = archive({{"a.txt", "hello", false}});
    auto a = ZipArchive::fromBytes(zip);
    ZipArchive::Entry pastEnd = a.entries()[0], tooLong = a.entries()[0];
    pastEnd.localOffset = static_cast<int64_t>(zip.size());
    tooLong.compressedSize = 1 << 20;
    for (const auto& entry : {pastEnd, tooLong})
        EXPECT_EQ(errorOf([&] { a.contents(entry); }), "Could not unpack a.txt.");
}

TEST(ZipArchive, ExtractWritesFilesAndSkipsFoldersForksAndEscapes) {
    testing::TempFolder tmp;
    std::string dest = tmp.path() + "/out/deeper";
    fs::create_directories(tmp.path() + "/out");
    auto zip = ZipArchive::fromBytes(archive({
        {"folder/", "", false},
        {"__MACOSX/._photo.jpg", "fork", false},
        {"../../evil.txt", "evil"},
        {"/tmp/absolute-evil.txt", "evil"},
        {"media/photo.jpg", "first"},
        {"media/photo.jpg", "second"},
    }));
    zip.extract(dest);
    EXPECT_EQ(testing::readFile(dest + "/media/photo.jpg"), "second");
    for (const std::string& never :
         {dest + "/folder", dest + "/__MACOSX", tmp.path() + "/evil.txt",
          tmp.path() + "/out/evil.txt", std::string("/tmp/absolute-evil.txt")})
        EXPECT_FALSE(fs::exists(never)) << never;
    EXPECT_EQ(fs::status(dest + "/media").permissions() & fs::perms::all, fs::perms::owner_all);
}

TEST(ZipArchive, ExtractNeverWritesThroughAPlantedLink) {
    testing::TempFolder tmp, elsewhere;
    std::string dest = tmp.path() + "/x";
    fs::create_directories(dest);
    fs::create_directory_symlink(elsewhere.path(), dest + "/media");
    fs::create_symlink(elsewhere.path() + "/victim.txt", dest + "/chat.txt");
    ZipArchive::fromBytes(archive({{"chat.txt", "chat"}})).extract(dest);
    EXPECT_FALSE(fs::exists(elsewhere.path() + "/victim.txt"));
    EXPECT_FALSE(fs::is_symlink(dest + "/chat.txt"));
    EXPECT_EQ(testing::readFile(dest + "/chat.txt"), "chat");

    auto intoLink = ZipArchive::fromBytes(archive({{"media/p.jpg", "p"}}));
    EXPECT_THROW(intoLink.extract(dest), EvidenceError);
    EXPECT_FALSE(fs::exists(elsewhere.path() + "/p.jpg"));
}

TEST(ZipArchive, OpensAFileFromDisk) {
    testing::TempFolder tmp;
    auto zip = ZipArchive::open(tmp.write("chat.zip", archive({{"_chat.txt", "hi"}})));
    EXPECT_EQ(zip.contents(zip.entries().at(0)), "hi");
    EXPECT_THROW(ZipArchive::open(tmp.path() + "/missing.zip"), EvidenceError);
}

}  // namespace
}  // namespace kinfolio
