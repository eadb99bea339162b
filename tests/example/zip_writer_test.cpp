#include "example/zip_writer.h"

#include <gtest/gtest.h>

#include "support/zip_entries.h"

namespace kinfolio {
namespace {

TEST(ZipWriter, StoredAndDeflatedEntriesReadBackWithTheirNames) {
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "[05/01/2025, 09:00:00] Alex: line " + std::to_string(i) + "\n";
    std::string binary("\x00\x01\xff\x89PNG", 7);
    std::string archive = ZipWriter::archive(
        {{"_chat.txt", text, true}, {"photos/café.png", binary, false}, {"empty.txt", "", true}});
    auto entries = testing::zipEntries(archive);
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries["_chat.txt"], text);
    EXPECT_EQ(entries["photos/café.png"], binary);
    EXPECT_EQ(entries["empty.txt"], "");
    // Deflating the repetitive chat makes the archive much smaller than it.
    EXPECT_LT(archive.size(), text.size() / 2);
}

// The same entries always give the same bytes; no entries give just the end record.
TEST(ZipWriter, SameEntriesGiveTheSameBytesAndNoneJustTheEndRecord) {
    std::vector<ZipWriter::Entry> entries = {{"a.txt", "hello", true}, {"b.bin", "xyz", false}};
    EXPECT_EQ(ZipWriter::archive(entries), ZipWriter::archive(entries));
    EXPECT_EQ(ZipWriter::archive({}).size(), 22u);
    EXPECT_TRUE(testing::zipEntries(ZipWriter::archive({})).empty());
}

}  // namespace
}  // namespace kinfolio
