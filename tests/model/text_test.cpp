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

TEST(Utf8, RepairReplacesEachBadSequenceAndKeepsTheRest) {
    EXPECT_EQ(repairUtf8("caf\xE9 ok"), "caf\uFFFD ok");  // Latin-1
    EXPECT_EQ(repairUtf8("\xE2\x9D"), "\uFFFD");          // a truncated three-byte sequence
    EXPECT_EQ(repairUtf8("a\xFF\xFE"
                         "b\u00e9"),
              "a\uFFFD\uFFFDb\u00e9");
    EXPECT_EQ(repairUtf8("fine \u2764"), "fine \u2764");
}

// A mailbox of a whole account can be larger than ICU's 32-bit offsets reach.
TEST(Utf8, ValidityOfTextLargerThanTwoGigabytes) {
    const size_t size = (size_t{1} << 31) + 4096;
    void* p = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(p, MAP_FAILED);
    auto* bytes = static_cast<char*>(p);
    // Untouched pages read as zeros (valid ASCII); only the tail is written.
    const size_t tail = (size_t{1} << 31) + 8;
    bytes[tail] = '\xC3';
    bytes[tail + 1] = '\xA9';
    std::string_view text(bytes, size);
    EXPECT_TRUE(isValidUtf8(text));
    bytes[tail + 1] = 'x';
    EXPECT_FALSE(isValidUtf8(text));
    ::munmap(p, size);
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

TEST(Text, EditsJoinsAndTrims) {
    const std::pair<std::string, std::string> cases[] = {
        {replaceAll("a/b/c", "/", " - "), "a - b - c"},
        {replaceAll("aaa", "aa", "b"), "ba"},
        {replaceAll("abc", "", "x"), "abc"},
        {removeAll("\uFEFFhi\uFEFF", "\uFEFF"), "hi"},
        {asciiLower("Date \u00C9"), "date \u00C9"},
        {join({}, ", "), ""},
        {join({"a"}, ", "), "a"},
        {join({"a", "", "b"}, ", "), "a, , b"},
        {joinNonEmpty({"", "Sam", "", "Alex"}, " & "), "Sam & Alex"},
        {joinNonEmpty({"", ""}, " & "), ""},
        {trimWhitespace("\u00a0\t hi there \n\u3000"), "hi there"},
        {trimWhitespace(" \n "), ""},
        {trimWhitespace("x\xC3"), "x\xC3"},  // a broken tail is not white space
        {trimSpacesAndTabs("\t Sender \n"), "Sender \n"},
        {trimSpacesAndTabs(" \t "), ""},
        // Prefixes count code points, not bytes.
        {prefixCodePoints("caf\u00e9 au lait", 4), "caf\u00e9"},
        {prefixCodePoints("\U0001F600\U0001F600", 1), "\U0001F600"},
        {prefixCodePoints("ab", 5), "ab"},
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result, expected);
    EXPECT_TRUE(startsWith("[LINE] Chat", "[LINE]"));
    EXPECT_FALSE(startsWith("[LI", "[LINE]"));
    EXPECT_TRUE(endsWith("chat.txt", ".txt"));
    EXPECT_FALSE(endsWith("txt", "chat.txt"));
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

TEST(Regex, GroupsThatDidNotTakePartAreNone) {
    static const Regex pattern("^(\\d{1,2}):(\\d{2})(?:\\s?([AP]M))?$");
    icu::UnicodeString text = toUnicode("9:05");
    auto m = pattern.matcher(text);
    UErrorCode status = U_ZERO_ERROR;
    ASSERT_TRUE(m->matches(status));
    EXPECT_EQ(groupText(*m, 1), "9");
    EXPECT_EQ(groupText(*m, 3), std::nullopt);
    EXPECT_TRUE(pattern.matchesWhole(toUnicode("09:05 PM")));
    EXPECT_FALSE(pattern.matchesWhole(toUnicode("at 09:05")));
    EXPECT_TRUE(Regex("\\p{Han}").find(toUnicode("2025.06.14 \u571f")));
}

}  // namespace
}  // namespace kinfolio
