#include "model/files.h"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.h"

namespace kinfolio {
namespace {

std::string pattern(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>('a' + i % 23);
    return bytes;
}

TEST(MappedFile, ReleasedPagesReadTheSameBytesAgain) {
    testing::TempFolder dir;
    std::string bytes = pattern(5 * 4096 + 123);
    auto file = MappedFile::open(dir.write("big.txt", bytes));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->bytes(), bytes);
    file->releaseBefore(file->bytes().data() + 3 * 4096 + 17);
    EXPECT_EQ(file->bytes(), bytes);
    file->releaseBefore(file->bytes().data() + file->size());
    EXPECT_EQ(file->bytes(), bytes);
}

TEST(MappedFile, ReleaseIgnoresPointersElsewhereAndFilesReadIntoMemory) {
    testing::TempFolder dir;
    std::string bytes = pattern(3 * 4096);
    auto file = MappedFile::open(dir.write("a.txt", bytes));
    ASSERT_TRUE(file);
    file->releaseBefore(bytes.data() + bytes.size());  // not in the mapping
    file->releaseBefore(file->bytes().data());         // nothing before the start
    EXPECT_EQ(file->bytes(), bytes);

    auto empty = MappedFile::open(dir.write("empty.txt", ""));
    ASSERT_TRUE(empty);
    empty->releaseBefore(empty->bytes().data());
    EXPECT_EQ(empty->size(), 0u);
}

}  // namespace
}  // namespace kinfolio
