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

TEST(Text, ReplaceRemoveAndCompare) {
    EXPECT_EQ(replaceAll("a/b/c", "/", " - "), "a - b - c");
    EXPECT_EQ(replaceAll("aaa", "aa", "b"), "ba");
    EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
    EXPECT_EQ(removeAll("\uFEFFhi\uFEFF", "\uFEFF"), "hi");
    EXPECT_TRUE(startsWith("[LINE] Chat", "[LINE]"));
    EXPECT_FALSE(startsWith("[LI", "[LINE]"));
    EXPECT_TRUE(endsWith("chat.txt", ".txt"));
    EXPECT_FALSE(endsWith("txt", "chat.txt"));
    EXPECT_EQ(asciiLower("Date \u00C9"), "date \u00C9");
}

TEST(Text, JoinKeepsOrderAndNonEmptyDropsBlanks) {
    EXPECT_EQ(join({}, ", "), "");
    EXPECT_EQ(join({"a"}, ", "), "a");
    EXPECT_EQ(join({"a", "", "b"}, ", "), "a, , b");
    EXPECT_EQ(joinNonEmpty({"", "Sam", "", "Alex"}, " & "), "Sam & Alex");
    EXPECT_EQ(joinNonEmpty({"", ""}, " & "), "");
}

TEST(Text, TrimmingUnicodeWhiteSpaceOrOnlySpacesAndTabs) {
    EXPECT_EQ(trimWhitespace("\u00a0\t hi there \n\u3000"), "hi there");
    EXPECT_EQ(trimWhitespace(" \n "), "");
    EXPECT_EQ(trimWhitespace("x\xC3"), "x\xC3");  // a broken tail is not white space
    EXPECT_EQ(trimSpacesAndTabs("\t Sender \n"), "Sender \n");
    EXPECT_EQ(trimSpacesAndTabs(" \t "), "");
}

TEST(Text, PrefixCountsCodePointsNotBytes) {
    EXPECT_EQ(prefixCodePoints("caf\u00e9 au lait", 4), "caf\u00e9");
    EXPECT_EQ(prefixCodePoints("\U0001F600\U0001F600", 1), "\U0001F600");
    EXPECT_EQ(prefixCodePoints("ab", 5), "ab");
    EXPECT_EQ(prefixCodePoints("2025-06-14 09:15:00 +0200", 19), "2025-06-14 09:15:00");
}

TEST(Text, DecimalValueOfDigitsOfAnyScript) {
    EXPECT_EQ(decimalValue("2025"), 2025);
    EXPECT_EQ(decimalValue("\uFF12\uFF10"), 20);  // full-width
    EXPECT_EQ(decimalValue("\u0661\u0662"), 12);  // Arabic-Indic
    EXPECT_EQ(decimalValue(""), -1);
    EXPECT_EQ(decimalValue("12a"), -1);
    EXPECT_EQ(decimalValue("\u00BD"), -1);              // a number, not a digit
    EXPECT_EQ(decimalValue(std::string(19, '9')), -1);  // would overflow
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
