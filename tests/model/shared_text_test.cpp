#include "model/shared_text.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace kinfolio {
namespace {

TEST(SharedText, CopiesShareOneString) {
    SharedText a(std::string(64, 'f'));
    SharedText b = a;
    EXPECT_EQ(&a.str(), &b.str());
    EXPECT_EQ(b, std::string(64, 'f'));
}

TEST(SharedText, ComparesWithEveryKindOfText) {
    SharedText a("abc");
    EXPECT_EQ(a, "abc");
    EXPECT_EQ(a, std::string("abc"));
    EXPECT_EQ(a, std::string_view("abc"));
    EXPECT_EQ(a, SharedText(std::string("abc")));  // equal texts, two strings
    EXPECT_NE(a, "abd");
    EXPECT_LT(a, "abd");
    EXPECT_LT(a, std::string("abd"));
    EXPECT_GT(a, std::string_view("ab"));
    EXPECT_LT(SharedText("a"), SharedText("b"));
    EXPECT_FALSE(SharedText("b") < SharedText("a"));
    // Empty by default, and equal to an empty text.
    EXPECT_TRUE(SharedText().empty());
    EXPECT_EQ(SharedText().size(), 0u);
    EXPECT_EQ(SharedText(), "");
    EXPECT_EQ(SharedText(), SharedText(""));
    EXPECT_FALSE(SharedText("x").empty());
}

TEST(SharedText, ReadsAsAStringForLookupsJoiningAndPrinting) {
    SharedText id("abc");
    std::map<std::string, int> numbers{{"abc", 1}};
    EXPECT_EQ(numbers.find(id)->second, 1);
    std::string copy = id;
    EXPECT_EQ(copy, "abc");
    EXPECT_EQ(id + ":" + "7", "abc:7");
    std::ostringstream out;
    out << id;
    EXPECT_EQ(out.str(), "abc");
}

}  // namespace
}  // namespace kinfolio
