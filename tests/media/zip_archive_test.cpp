#include "media/zip_archive.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "model/evidence.h"
#include "support/evidence_error.h"
#include "support/temp_folder.h"
#include "support/zip_writer.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;
using testing::makeZip;
using testing::ZipMember;

const char* kNotAZip = "Not a ZIP file Kinfolio can read.";

TEST(ZipArchive, ReadsStoredAndDeflatedEntriesInDirectoryOrder) {
    std::string text(5000, 'x');
    auto zip = ZipArchive::fromBytes(makeZip({{"chat/_chat.txt", text, 8}, {"a.bin", "raw", 0}}));
    ASSERT_EQ(zip.entries().size(), 2u);
    EXPECT_EQ(zip.entries()[0].path, "chat/_chat.txt");
    EXPECT_EQ(zip.entries()[0].method, 8);
    EXPECT_EQ(zip.entries()[0].size, 5000);
    EXPECT_LT(zip.entries()[0].compressedSize, 100);
    EXPECT_EQ(zip.contents(zip.entries()[0]), text);
    EXPECT_EQ(zip.contents(zip.entries()[1]), "raw");
}

TEST(ZipArchive, FindsTheEndRecordBehindTheLongestComment) {
    std::string comment(65535, 'c');
    // The search must reach back over the whole comment to the end record.
    auto zip = ZipArchive::fromBytes(makeZip({{"a.txt", "hello", 0}}, comment));
    ASSERT_EQ(zip.entries().size(), 1u);
    EXPECT_EQ(zip.contents(zip.entries()[0]), "hello");
}

TEST(ZipArchive, RefusesWhatIsNoZip) {
    EXPECT_EQ(errorOf([] { ZipArchive::fromBytes(std::string(21, '\0')); }), kNotAZip);
    std::string random;
    for (int i = 0; i < 5000; ++i)
        random += static_cast<char>((i * 7919 + 13) % 251);
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(random); }), kNotAZip);
    // The end record one byte too far back, behind a comment longer than allowed.
    std::string tooFar = makeZip({{"a.txt", "x", 0}}) + std::string(65536, 'c');
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(tooFar); }), kNotAZip);
}

TEST(ZipArchive, EmptyDirectoryIgnoresItsOffset) {
    std::string end = makeZip({});
    end[16] = '\xFF';
    end[19] = '\x7F';
    EXPECT_TRUE(ZipArchive::fromBytes(end).entries().empty());
}

TEST(ZipArchive, TruncatedOrLyingDirectoryIsRefused) {
    std::string zip = makeZip({{"a.txt", "hello", 0}, {"b.txt", "world", 0}});
    // Cut in the middle of the central directory, keeping the end record.
    size_t endAt = zip.size() - 22;
    std::string cut = zip.substr(0, endAt - 30) + zip.substr(endAt);
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(cut); }), kNotAZip);

    std::string lyingCount = zip;
    lyingCount[endAt + 10] = 3;  // three entries, two records
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(lyingCount); }), kNotAZip);

    std::string lyingOffset = zip;
    lyingOffset[endAt + 16] = '\xF0';
    lyingOffset[endAt + 19] = '\x7F';  // far beyond the file
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(lyingOffset); }), kNotAZip);

    std::string wrongSignature = zip;
    size_t central = zip.find("PK\x01\x02");
    wrongSignature[central + 2] = 9;
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(wrongSignature); }), kNotAZip);

    std::string longName = zip;
    size_t second = zip.find("PK\x01\x02", central + 4);
    longName[second + 28] = '\xFF';  // name length 255 runs past the end
    EXPECT_EQ(errorOf([&] { ZipArchive::fromBytes(longName); }), kNotAZip);
}

TEST(ZipArchive, Latin1NameIsRepairedAndStillReadable) {
    auto zip = ZipArchive::fromBytes(makeZip({{"caf\xE9.txt", "coffee", 8}}));
    ASSERT_EQ(zip.entries().size(), 1u);
    EXPECT_EQ(zip.entries()[0].path, "caf\uFFFD.txt");
    EXPECT_EQ(zip.contents(zip.entries()[0]), "coffee");
}

TEST(ZipArchive, StoredEntryIgnoresItsRecordedSize) {
    auto zip = ZipArchive::fromBytes(makeZip({{"a.txt", "hello", 0, 99}}));
    EXPECT_EQ(zip.contents(zip.entries()[0]), "hello");
}

TEST(ZipArchive, DeflatedEntryMustGiveExactlyItsSize) {
    std::string text = "the quick brown fox jumps over the lazy dog";
    auto larger = ZipArchive::fromBytes(makeZip({{"a.txt", text, 8, 100}}));
    EXPECT_EQ(errorOf([&] { larger.contents(larger.entries()[0]); }), "Could not unpack a.txt.");
    // A stream that gives more than declared is cut at the declared size.
    auto smaller = ZipArchive::fromBytes(makeZip({{"a.txt", text, 8, 9}}));
    EXPECT_EQ(smaller.contents(smaller.entries()[0]), "the quick");
    // Method 0 bytes relabelled as deflate of size 0: nothing is decoded.
    std::string relabelled = makeZip({{"a.txt", "garbage", 0, 0}});
    relabelled[8] = 8;
    relabelled[relabelled.find("PK\x01\x02") + 10] = 8;
    auto zero = ZipArchive::fromBytes(relabelled);
    EXPECT_EQ(zero.contents(zero.entries()[0]), "");
}

TEST(ZipArchive, CorruptStreamIsRefused) {
    std::string zip = makeZip({{"a.txt", std::string(1000, 'a') + "tail", 8}});
    zip[30 + 5] = '\xFF';
    zip[30 + 6] = '\xFF';
    auto archive = ZipArchive::fromBytes(zip);
    EXPECT_EQ(errorOf([&] { archive.contents(archive.entries()[0]); }), "Could not unpack a.txt.");
}

TEST(ZipArchive, AbsurdDeclaredSizeIsRefusedBeforeAllocating) {
    // 3 GiB from a few bytes is more than 1,000 times the input.
    auto bomb = ZipArchive::fromBytes(makeZip({{"big.txt", "abc", 8, 0xC0000000u}}));
    EXPECT_EQ(errorOf([&] { bomb.contents(bomb.entries()[0]); }), "Could not unpack big.txt.");
}

TEST(ZipArchive, UnknownMethodsAreNamed) {
    for (uint16_t method : {12, 14, 99}) {
        auto zip = ZipArchive::fromBytes(makeZip({{"x/data.bin", "payload", method}}));
        EXPECT_EQ(errorOf([&] { zip.contents(zip.entries()[0]); }),
                  "x/data.bin uses a ZIP compression Kinfolio does not read.");
    }
}

TEST(ZipArchive, LocalHeaderProblemsUseTheUnpackMessage) {
    std::string zip = makeZip({{"a.txt", "hello", 0}});
    std::string badLocal = zip;
    badLocal[1] = 'X';
    auto a = ZipArchive::fromBytes(badLocal);
    EXPECT_EQ(errorOf([&] { a.contents(a.entries()[0]); }), "Could not unpack a.txt.");

    ZipArchive::Entry pastEnd = a.entries()[0];
    pastEnd.localOffset = static_cast<int64_t>(zip.size());
    auto b = ZipArchive::fromBytes(zip);
    EXPECT_EQ(errorOf([&] { b.contents(pastEnd); }), "Could not unpack a.txt.");
    ZipArchive::Entry tooLong = b.entries()[0];
    tooLong.compressedSize = 1 << 20;
    EXPECT_EQ(errorOf([&] { b.contents(tooLong); }), "Could not unpack a.txt.");
}

TEST(ZipArchive, ExtractWritesFilesAndSkipsFoldersForksAndEscapes) {
    testing::TempFolder tmp;
    std::string dest = tmp.path() + "/out/deeper";
    fs::create_directories(tmp.path() + "/out");
    auto zip = ZipArchive::fromBytes(makeZip({
        {"folder/", "", 0},
        {"__MACOSX/._photo.jpg", "fork", 0},
        {"../../evil.txt", "evil", 8},
        {"/tmp/absolute-evil.txt", "evil", 8},
        {"media/photo.jpg", "first", 8},
        {"media/photo.jpg", "second", 8},
    }));
    zip.extract(dest);
    EXPECT_EQ(testing::readFile(dest + "/media/photo.jpg"), "second");
    EXPECT_FALSE(fs::exists(dest + "/folder"));
    EXPECT_FALSE(fs::exists(dest + "/__MACOSX"));
    EXPECT_FALSE(fs::exists(tmp.path() + "/evil.txt"));
    EXPECT_FALSE(fs::exists(tmp.path() + "/out/evil.txt"));
    EXPECT_FALSE(fs::exists("/tmp/absolute-evil.txt"));
    struct stat st {};
    ASSERT_EQ(::stat((dest + "/media").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(ZipArchive, ExtractNeverWritesThroughAPlantedLink) {
    testing::TempFolder tmp, elsewhere;
    std::string dest = tmp.path() + "/x";
    fs::create_directories(dest);
    fs::create_directory_symlink(elsewhere.path(), dest + "/media");
    fs::create_symlink(elsewhere.path() + "/victim.txt", dest + "/chat.txt");
    auto zip = ZipArchive::fromBytes(makeZip({{"chat.txt", "chat", 8}}));
    zip.extract(dest);
    EXPECT_FALSE(fs::exists(elsewhere.path() + "/victim.txt"));
    EXPECT_FALSE(fs::is_symlink(dest + "/chat.txt"));
    EXPECT_EQ(testing::readFile(dest + "/chat.txt"), "chat");

    auto intoLink = ZipArchive::fromBytes(makeZip({{"media/p.jpg", "p", 8}}));
    EXPECT_THROW(intoLink.extract(dest), EvidenceError);
    EXPECT_FALSE(fs::exists(elsewhere.path() + "/p.jpg"));
}

TEST(ZipArchive, ExtractStopsAtTheFirstBadEntryKeepingEarlierOnes) {
    testing::TempFolder tmp;
    auto zip =
        ZipArchive::fromBytes(makeZip({{"a.txt", "a", 8}, {"b.bin", "b", 14}, {"c.txt", "c", 8}}));
    EXPECT_EQ(errorOf([&] { zip.extract(tmp.path()); }),
              "b.bin uses a ZIP compression Kinfolio does not read.");
    EXPECT_TRUE(fs::exists(tmp.path() + "/a.txt"));
    EXPECT_FALSE(fs::exists(tmp.path() + "/c.txt"));
}

TEST(ZipArchive, OpensAFileFromDisk) {
    testing::TempFolder tmp;
    std::string path = tmp.write("chat.zip", makeZip({{"_chat.txt", "hi", 8}}));
    auto zip = ZipArchive::open(path);
    EXPECT_EQ(zip.contents(zip.entries().at(0)), "hi");
    EXPECT_THROW(ZipArchive::open(tmp.path() + "/missing.zip"), EvidenceError);
}

}  // namespace
}  // namespace kinfolio
