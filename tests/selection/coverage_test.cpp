#include <gtest/gtest.h>

#include "selection/items.h"
#include "selection/selection.h"

namespace kinfolio {
namespace {

using namespace testing;

TEST(Summary, SystemLinesAloneAreNothingAndNotExported) {
    std::vector<Evidence> chosen = {message("c", 0, at(2025, 1, 5), ""),
                                    message("c", 1, at(2025, 3, 5), "")};
    EXPECT_EQ(Selection::summary(refs(chosen)), "Nothing");
    EXPECT_EQ(Selection::exportCount(refs(chosen)), 0);
    EXPECT_TRUE(Selection::gapMonths(refs(chosen)).empty());
    EXPECT_EQ(Selection::summary({}), "Nothing");
}

}  // namespace
}  // namespace kinfolio
