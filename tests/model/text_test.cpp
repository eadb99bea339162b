#include "model/text.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace kinfolio {
namespace {

TEST(Utf8, ValidityFindsABadByteBehindLongAsciiRuns) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8("caf\u00e9 \u2764 \U0001F600 and plain ASCII"));
    EXPECT_FALSE(isValidUtf8(std::string(37, 'a') + "\xC3"));          // cut short at the end
    EXPECT_FALSE(isValidUtf8(std::string(16, 'a') + "\xED\xA0\x80"));  // a surrogate
    EXPECT_FALSE(isValidUtf8("\xC0\xAF"));                             // an overlong slash
}

TEST(Utf16, ByteOrderMarkOrPlausibleText) {
    EXPECT_EQ(decodeUtf16(std::string("\xFF\xFE"
                                      "H\0i\0",
                                      6)),
              "Hi");
    EXPECT_EQ(decodeUtf16(std::string("\xFE\xFF\0H\0i", 6)), "Hi");
    EXPECT_EQ(decodeUtf16(std::string("H\0\xE9\0", 4)), "H\u00e9");  // little-endian, no mark
    // Read little-endian first; U+0A00 is unassigned, so only big-endian fits.
    EXPECT_EQ(decodeUtf16(std::string("\0H\0\n", 4)), "H\n");
    EXPECT_EQ(decodeUtf16(std::string("\xFF\xFE"
                                      "H\0i",
                                      5)),
              std::nullopt);                                                   // odd length
    EXPECT_EQ(decodeUtf16(std::string("\xFF\xFE\x00\xD8", 4)), std::nullopt);  // lone surrogate
    EXPECT_EQ(decodeUtf16(""), std::nullopt);
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
