#include "model/text.h"

#include <gtest/gtest.h>

#include <random>

#include <algorithm>

#include "model/parallel.h"

namespace kinfolio {
namespace {

TEST(Utf8, ValidityFindsABadByteBehindLongAsciiRuns) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8("caf\u00e9 \u2764 \U0001F600 and plain ASCII"));
    EXPECT_FALSE(isValidUtf8(std::string(37, 'a') + "\xC3"));          // cut short at the end
    EXPECT_FALSE(isValidUtf8(std::string(16, 'a') + "\xED\xA0\x80"));  // a surrogate
    EXPECT_FALSE(isValidUtf8("\xC0\xAF"));                             // an overlong slash
}

// A large text is checked in pieces: a character across a cut, or a fault
// just before or after one, is judged as in one piece.
TEST(Utf8, ValidityOfALargeTextDoesNotDependOnItsPieces) {
    const std::string euro = "\u20AC", text = [&] {
        std::string t;
        for (int i = 0; i < (3 << 20); ++i)
            t += euro;
        return t;
    }();
    struct Case {
        size_t at;
        std::string bytes;
        bool valid;
    };
    const size_t third = text.size() / 3, half = text.size() / 2;
    const Case cases[] = {{0, "", true},          {half - 1, "a", false},
                          {half, "a", false},     {half + 1, "a", false},
                          {third, "\xC3", false}, {half - 3, "a\U0001F600a", true}};
    for (const auto& c : cases)
        for (unsigned threads : {1u, 2u, 3u}) {
            Parallel::setThreads(threads);
            std::string t = text;
            t.replace(c.at, c.bytes.size(), c.bytes);
            EXPECT_EQ(isValidUtf8(t), c.valid) << c.at << " on " << threads << " threads";
        }
    Parallel::setThreads(0);
}

// Every byte value at every place of a plain word: the eight-at-once tests
// answer as a byte-by-byte look would.
TEST(EightBytes, AnswerAsEachByteLookedAtAlone) {
    for (int place = 0; place < 8; ++place)
        for (int value = 0; value < 256; ++value) {
            std::string bytes = "abcdefgh";
            bytes[static_cast<size_t>(place)] = static_cast<char>(value);
            uint64_t word = eightBytes(bytes.data());
            auto any = [&](auto rule) { return std::ranges::any_of(bytes, rule); };
            auto byte = [](char c) { return static_cast<unsigned char>(c); };
            EXPECT_EQ(anyNonAscii(word), any([&](char c) { return byte(c) >= 0x80; })) << value;
            EXPECT_EQ(anyByteBelow(word, 0x20), any([&](char c) { return byte(c) < 0x20; }));
            EXPECT_EQ(anyByteBelow(word, 0x0E), any([&](char c) { return byte(c) < 0x0E; }));
            EXPECT_EQ(anyByteIs(word, '"'), any([](char c) { return c == '"'; })) << value;
        }
}

TEST(EightBytes, PlainAsciiRunAnswersAsEachByteLookedAtAlone) {
    // Every length up to past two wide steps, each byte value at each place.
    for (size_t length = 0; length <= 40; ++length)
        for (size_t place = 0; place <= length; ++place)
            for (int value : {0x00, 0x09, 0x0A, 0x0D, 0x0E, 0x1F, 0x7F, 0x80, 0xC2, 0xFF}) {
                // A mark before the place and one after it: only marks
                // inside the run count.
                std::string bytes(length + 1, 'x');
                bytes[place] = static_cast<char>(value);
                if (place >= 3) bytes[place - 3] = '<';
                if (place + 2 < length) bytes[place + 2] = '(';
                bytes.resize(length);
                size_t from = place / 2;
                size_t end = from;
                bool marked = false;
                for (; end < length && static_cast<unsigned char>(bytes[end]) >= 0x0E &&
                       static_cast<unsigned char>(bytes[end]) < 0x80;
                     ++end)
                    marked = marked || bytes[end] == '<' || bytes[end] == '(';
                auto run = plainAsciiRun(bytes, from, '<', '(');
                ASSERT_EQ(run.end, end) << length << " " << place << " " << value;
                ASSERT_EQ(run.marked, marked) << length << " " << place << " " << value;
            }
}

// The wide look counts and notices what a byte-by-byte one does, over runs
// long enough for its counters to be summed many times.
TEST(Utf8, LookOverLinesAnswersAsAByteByByteLook) {
    std::mt19937 rng(11);
    const std::string pieces[] = {"a",  "abcdefghijklmnop", "\n",     "\n\n\n",
                                  "\r", "\u00e9",           "\u4e2d", "\xC3"};
    for (int round = 0; round < 300; ++round) {
        std::string text;
        size_t parts = std::uniform_int_distribution<size_t>(0, 3000)(rng);
        for (size_t k = 0; k < parts; ++k) {
            // Mostly plain text and line feeds; now and then anything else.
            size_t pick = std::uniform_int_distribution<size_t>(0, 99)(rng);
            text += pieces[pick < 45 ? 1 : pick < 90 ? 3 : pick % 8];
        }
        if (round == 0) text = std::string(10000, '\n');  // every counter full at each sum
        LineLook look = lookOverLines(text);
        // ICU replaces what is ill-formed, so only well-formed text comes
        // back unchanged.
        bool wellFormed = toUtf8(toUnicode(text)) == text;
        ASSERT_EQ(look.wellFormed, wellFormed);
        if (!wellFormed) continue;
        ASSERT_EQ(look.lineFeeds, static_cast<size_t>(std::ranges::count(text, '\n')));
        ASSERT_EQ(look.carriageReturn, text.find('\r') != std::string::npos);
    }
}

TEST(Utf16, ByteOrderMarkOrPlausibleText) {
    using namespace std::string_literals;
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"\xFF\xFEH\0i\0"s, "Hi"},
        {"\xFE\xFF\0H\0i"s, "Hi"},
        {"H\0\xE9\0"s, "H\u00e9"},  // little-endian, no mark
        // Read little-endian first; U+0A00 is unassigned, so only big-endian fits.
        {"\0H\0\n"s, "H\n"},
        {"\xFF\xFEH\0i"s, std::nullopt},      // odd length
        {"\xFF\xFE\x00\xD8"s, std::nullopt},  // lone surrogate
        {"", std::nullopt},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(decodeUtf16(bytes), text) << bytes.size();
}

TEST(Text, DecimalValueOfDigitsOfAnyScript) {
    const std::pair<const char*, long long> cases[] = {
        {"2025", 2025},
        {"\uFF12\uFF10\uFF12\uFF15", 2025},  // full-width
        {"\u0661\u0662", 12},                // Arabic-Indic
        {"", -1},
        {"12a", -1},
        {"\u00BD", -1},               // a number, not a digit
        {"9999999999999999999", -1},  // would overflow
    };
    for (const auto& [digits, value] : cases)
        EXPECT_EQ(decimalValue(digits), value) << digits;
}

}  // namespace
}  // namespace kinfolio
