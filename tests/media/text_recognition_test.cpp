#include "media/text_recognition.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "media/test_images.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::encode;
using testing::textImage;

// A chat screenshot in miniature: one line near the top, one near the bottom.
std::string chatShot() {
    return encode(textImage(900, 500, {{"Call Sam at 8", 20}, {"See you soon", 420}}), ".png");
}

std::string fileID(char c) {
    return std::string(64, c);
}

TEST(TextRecognition, ADamagedCacheEntryIsMadeAgain) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.write("Screenshot.png", chatShot());
    std::string stored = cache.path() + "/kinfolio/text/" + fileID('c') + ".json";
    for (const char* damage : {"{\"engine\": 3", "{\"engine\": 3, \"boxes\": []}", "\x89PNG"}) {
        SCOPED_TRACE(damage);
        Scanner::detail::clearTextCacheForTesting();
        fs::create_directories(fs::path(stored).parent_path());
        std::ofstream(stored, std::ios::binary | std::ios::trunc) << damage;
        EXPECT_EQ(Scanner::recognizeText(path, fileID('c')).size(), 2u);
        EXPECT_NE(testing::readFile(stored).find("soon"), std::string::npos);
    }
}

TEST(TextRecognition, ImagesThatCannotBeReadGiveNoLines) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string notAnImage = folder.write("notes.png", "Just some notes, not a picture.\n");
    EXPECT_TRUE(Scanner::recognizeText(notAnImage, fileID('d')).empty());
    EXPECT_TRUE(Scanner::recognizeText(folder.path() + "/missing.png", fileID('e')).empty());
    // The empty answer for the undecodable file is kept too.
    EXPECT_TRUE(fs::exists(cache.path() + "/kinfolio/text/" + fileID('d') + ".json"));
}

TEST(TextRecognition, WorksWithoutAUsableCacheFolder) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.write("Screenshot.png", chatShot());
    // A file where the cache folder should be: privateCacheDirectory refuses.
    std::string blocker = folder.write("not-a-folder", "x");
    ::setenv("XDG_CACHE_HOME", blocker.c_str(), 1);
    EXPECT_EQ(Scanner::recognizeText(path, fileID('f')).size(), 2u);
}

// English unless other languages are named plainly; warming up leaves no trace.
TEST(TextRecognition, OtherLanguagesOnlyWhenNamedPlainly) {
    testing::ScopedCacheHome cache;
    Scanner::warmUpTextRecognition();
    EXPECT_FALSE(fs::exists(cache.path() + "/kinfolio/text"));
    EXPECT_EQ(Scanner::recognitionLanguages(), "eng");
    const std::pair<const char*, const char*> cases[] = {
        {"eng+tha", "eng+tha"}, {"chi_sim", "chi_sim"}, {"", "eng"},
        {"../eng", "eng"},      {"eng+", "eng"},        {"ENG", "eng"},
    };
    for (const auto& [named, used] : cases) {
        testing::ScopedEnvironment languages("KINFOLIO_TEXT_LANGUAGES", named);
        EXPECT_EQ(Scanner::recognitionLanguages(), used) << named;
    }
}

}  // namespace
}  // namespace kinfolio
