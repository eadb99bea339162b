#include "model/shared_text.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "model/evidence.h"

namespace kinfolio {
namespace {

TEST(SharedText, CopiesShareOneString) {
    SharedText a(std::string(64, 'f'));
    SharedText b = a;
    Evidence first, second;
    first.fileID = a;
    second = first;
    EXPECT_EQ(&a.str(), &b.str());
    EXPECT_EQ(&second.fileID.str(), &a.str());
    EXPECT_EQ(second.fileID, std::string(64, 'f'));
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
}

TEST(SharedText, EmptyByDefaultAndEqualToAnEmptyText) {
    SharedText none;
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.size(), 0u);
    EXPECT_EQ(none, "");
    EXPECT_EQ(none, SharedText(""));
    EXPECT_FALSE(SharedText("x").empty());
}

TEST(SharedText, ReadsAsAStringForLookupsJoiningAndPrinting) {
    SharedText id("abc");
    std::map<std::string, int> numbers{{"abc", 1}};
    EXPECT_EQ(numbers.count(id), 1u);
    EXPECT_EQ(numbers.find(id)->second, 1);
    std::string copy = id;
    EXPECT_EQ(copy, "abc");
    EXPECT_EQ(id + ":" + "7", "abc:7");
    std::ostringstream out;
    out << id;
    EXPECT_EQ(out.str(), "abc");
    Evidence e;
    e.fileID = id;
    e.position = -3;
    EXPECT_EQ(e.id(), "abc:-3");
}

}  // namespace
}  // namespace kinfolio
