#include "model/files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "support/evidence_error.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

// Another program shrinking or rewriting a file while it is read: the bytes
// past the new end read as zeros instead of a SIGBUS ending the process, and
// the file says it changed.
TEST(MappedFile, AFileChangedWhileReadSaysSoInsteadOfStoppingTheProcess) {
    // Name, what happens to the file while it is mapped, whether it says it changed.
    const std::tuple<const char*, std::function<void(const std::string& path)>, bool> cases[] = {
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
    for (const auto& [name, change, changed] : cases) {
        testing::TempFolder dir;
        std::string bytes(6 * 4096 + 5, '\0');
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>('a' + i % 23);
        std::string path = dir.write("chat.txt", bytes);
        auto file = MappedFile::open(path);
        ASSERT_TRUE(file) << name;
        change(path);
        // Every byte is touched, as hashing does.
        std::string copy(file->bytes());
        EXPECT_EQ(file->changed(), changed) << name;
        if (!changed) {
            EXPECT_EQ(copy, bytes);
        }
        if (std::string(name) == "emptied") {
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

// What may already be at the place of the cache folder, or of a folder in it,
// and what Kinfolio makes of it: a private folder of ours, or the refusal.
TEST(PrivateCacheDirectory, IsOursAndClosedOrRefused) {
    enum class Before { nothing, openFolder, linkToOurs, linkToOthers, othersFolder };
    const std::tuple<const char*, Before, bool> cases[] = {
        {"made when missing", Before::nothing, false},
        {"an open folder is closed", Before::openFolder, false},
        {"a link to a folder of ours", Before::linkToOurs, true},
        {"a link to another user's folder", Before::linkToOthers, true},
        {"another user's folder", Before::othersFolder, true},
    };
    bool root = ::getuid() == 0;
    for (const std::string sub : {"", "pictures"})
        for (const auto& [name, before, refused] : cases) {
            SCOPED_TRACE(std::string(name) + (sub.empty() ? "" : " (" + sub + ")"));
            // Only root can make a folder of another user: root gives one away.
            if (before == Before::othersFolder && !root) continue;
            testing::ScopedCacheHome home;
            testing::TempFolder elsewhere;
            std::string cache = home.path() + "/kinfolio";
            std::string place = sub.empty() ? cache : cache + "/" + sub;
            ASSERT_TRUE(sub.empty() || ::mkdir(cache.c_str(), 0700) == 0);
            std::string target = elsewhere.path();
            bool others = before == Before::linkToOthers || before == Before::othersFolder;
            if (others && !root) target = "/tmp";
            if (target == elsewhere.path()) ::chmod(target.c_str(), 0755);
            ASSERT_TRUE(!others || !root || ::chown(target.c_str(), 65534, 65534) == 0);
            auto modeOf = [](const std::string& path) {
                struct stat st {};
                return ::lstat(path.c_str(), &st) == 0 ? st.st_mode : 0u;
            };
            mode_t targetMode = modeOf(target);
            auto prepare = [&] {
                switch (before) {
                    case Before::nothing:
                        return true;
                    case Before::openFolder:
                        return ::mkdir(place.c_str(), 0700) == 0 &&
                               ::chmod(place.c_str(), 0777) == 0;
                    case Before::linkToOurs:
                    case Before::linkToOthers:
                        return ::symlink(target.c_str(), place.c_str()) == 0;
                    case Before::othersFolder:
                        return ::rename(target.c_str(), place.c_str()) == 0;
                }
                return false;
            };
            ASSERT_TRUE(prepare());

            std::string error = testing::errorOf([&] { privateCacheDirectory(sub); });
            if (refused) {
                EXPECT_EQ(error,
                          "The cache folder " + place + " is not a private folder of this user.");
                // Neither changed, nor made private through the link.
                EXPECT_EQ(modeOf(before == Before::othersFolder ? place : target), targetMode);
                continue;
            }
            EXPECT_EQ(error, "(no error)");
            EXPECT_EQ(privateCacheDirectory(sub), place);
            EXPECT_EQ(modeOf(place), S_IFDIR | 0700);
        }
}

}  // namespace
}  // namespace kinfolio
