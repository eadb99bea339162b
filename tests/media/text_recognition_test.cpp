#include "media/text_recognition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
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

bool containsWord(const std::string& text, const std::string& word) {
    auto lower = [](std::string s) {
        std::transform(s.begin(), s.end(), s.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return s;
    };
    return lower(text).find(lower(word)) != std::string::npos;
}

// A chat screenshot in miniature: one line near the top, one near the bottom.
std::string chatShot() {
    return encode(textImage(900, 500, {{"Call Sam at 8", 20}, {"See you soon", 420}}), ".png");
}

std::string fileID(char c) {
    return std::string(64, c);
}

TEST(TextRecognition, FindsLinesWithBoxesFromTheLowerLeft) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.write("Screenshot.png", chatShot());
    auto boxes = Scanner::recognizeText(path, fileID('a'));
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_TRUE(containsWord(boxes[0].text, "Call Sam")) << boxes[0].text;
    EXPECT_TRUE(containsWord(boxes[1].text, "See you soon")) << boxes[1].text;
    for (const auto& b : boxes) {
        EXPECT_EQ(b.text.find('\n'), std::string::npos);
        EXPECT_GE(b.x, 0.0);
        EXPECT_GE(b.y, 0.0);
        EXPECT_GT(b.width, 0.0);
        EXPECT_GT(b.height, 0.0);
        EXPECT_LE(b.x + b.width, 1.0);
        EXPECT_LE(b.y + b.height, 1.0);
    }
    // The top line sits near y + height = 1, the bottom one near y = 0.
    EXPECT_GT(boxes[0].y, boxes[1].y);
    EXPECT_GT(boxes[0].y + boxes[0].height, 0.9);
    EXPECT_LT(boxes[1].y, 0.1);
    // Text starts 40 px in from the left of 900.
    EXPECT_NEAR(boxes[0].x, 40.0 / 900, 0.02);
}

TEST(TextRecognition, AnswersFromTheProcessThenFromTheDisk) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    std::string path = folder.write("Screenshot.png", chatShot());
    auto first = Scanner::recognizeText(path, fileID('b'));
    ASSERT_FALSE(first.empty());

    // Were the image read again, the blank page would give no lines.
    folder.write("Screenshot.png", encode(testing::solidImage(900, 500, 1), ".png"));
    EXPECT_EQ(Scanner::recognizeText(path, fileID('b')), first);

    fs::remove(path);
    Scanner::detail::clearTextCacheForTesting();
    std::string stored = cache.path() + "/kinfolio/text/" + fileID('b') + ".json";
    ASSERT_TRUE(fs::exists(stored));
    EXPECT_EQ(Scanner::recognizeText(path, fileID('b')), first);
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

TEST(TextRecognition, ReportsProgressInOrderAndKeepsJobOrder) {
    testing::ScopedCacheHome cache;
    testing::TempFolder folder;
    const std::vector<std::string> words = {"Apple", "Banana", "Cherry"};
    std::vector<Scanner::RecognitionJob> jobs;
    for (size_t i = 0; i < words.size(); ++i) {
        // The first image is the largest, so it tends to finish last.
        int width = i == 0 ? 1400 : 500;
        std::string path = folder.write(
            words[i] + ".png", encode(textImage(width, 160, {{words[i], 40}}, 48), ".png"));
        jobs.push_back({path, fileID(static_cast<char>('g' + i)), {}});
    }
    std::vector<std::pair<size_t, size_t>> calls;
    Scanner::recognizeAll(
        jobs, [&](size_t read, size_t total) { calls.emplace_back(read, total); }, 2);
    EXPECT_EQ(calls, (std::vector<std::pair<size_t, size_t>>{{1, 3}, {2, 3}, {3, 3}}));
    for (size_t i = 0; i < jobs.size(); ++i) {
        ASSERT_EQ(jobs[i].boxes.size(), 1u) << words[i];
        EXPECT_TRUE(containsWord(jobs[i].boxes[0].text, words[i])) << jobs[i].boxes[0].text;
    }
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
