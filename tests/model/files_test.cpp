#include "model/files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
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

// Another program shrinking or rewriting a file while it is read: the bytes
// past the new end read as zeros instead of a SIGBUS ending the process, and
// the file says it changed.
TEST(MappedFile, AFileChangedWhileReadSaysSoInsteadOfStoppingTheProcess) {
    struct Case {
        const char* name;
        std::function<void(const std::string& path)> change;
        bool changed;
    } cases[] = {
        {"untouched", [](const std::string&) {}, false},
        {"emptied", [](const std::string& p) { ASSERT_EQ(::truncate(p.c_str(), 0), 0); }, true},
        {"cut after a page",
         [](const std::string& p) { ASSERT_EQ(::truncate(p.c_str(), 4096), 0); }, true},
        {"rewritten at the same size",
         [](const std::string& p) {
             struct timespec later[2] = {{0, UTIME_OMIT}, {2000000000, 0}};
             ASSERT_EQ(::utimensat(AT_FDCWD, p.c_str(), later, 0), 0);
         },
         true},
    };
    for (const auto& c : cases) {
        testing::TempFolder dir;
        std::string bytes = pattern(6 * 4096 + 5);
        std::string path = dir.write("chat.txt", bytes);
        auto file = MappedFile::open(path);
        ASSERT_TRUE(file) << c.name;
        c.change(path);
        // Every byte is touched, as hashing does.
        std::string copy(file->bytes());
        EXPECT_EQ(file->changed(), c.changed) << c.name;
        if (!c.changed) {
            EXPECT_EQ(copy, bytes);
        }
        if (std::string(c.name) == "emptied") {
            EXPECT_EQ(copy, std::string(bytes.size(), '\0'));
        }
    }
}

TEST(MappedFile, APipeOrADeviceIsRefusedWithoutWaiting) {
    testing::TempFolder dir;
    std::string fifo = dir.path() + "/pipe.txt";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(MappedFile::open(fifo));  // no writer: opening must not block
    EXPECT_FALSE(MappedFile::open("/dev/null"));
}

}  // namespace
}  // namespace kinfolio
