#include "model/evidence.h"

#include <gtest/gtest.h>

#include "model/source.h"

namespace kinfolio {
namespace {

Evidence message(std::string fileID, int64_t position, double date = 0,
                 std::string sender = "Sam") {
    Evidence e;
    e.fileID = std::move(fileID);
    e.position = position;
    e.date = date;
    e.sender = std::move(sender);
    return e;
}

TEST(Evidence, IdJoinsFileAndPositionIncludingNegative) {
    EXPECT_EQ(message("ab12", 7).id(), "ab12:7");
    EXPECT_EQ(message("ab12", -1).id(), "ab12:-1");
}

TEST(Evidence, SystemItemsAreMessagesWithoutSender) {
    Evidence system = message("f", 1, 0, "");
    EXPECT_TRUE(system.isSystem());
    Evidence call = system;
    call.kind = ItemKind::call;
    EXPECT_FALSE(call.isSystem());
    EXPECT_FALSE(message("f", 1).isSystem());
}

TEST(Evidence, EqualityComparesTextBoxesMemberwise) {
    Evidence a = message("f", 1), b = a;
    a.textBoxes.push_back({"hi", 0.1, 0.2, 0.3, 0.4});
    b.textBoxes.push_back({"hi", 0.1, 0.2, 0.3, 0.4});
    EXPECT_EQ(a, b);
    b.textBoxes[0].height = 0.5;
    EXPECT_NE(a, b);
}

TEST(Evidence, SortByDateFileAndPositionBreaksTiesByFileThenPosition) {
    std::vector<Evidence> items = {message("b", 1, 10), message("a", 5, 10), message("a", 2, 10),
                                   message("z", 0, 5)};
    sortByDateFileAndPosition(items);
    std::vector<std::string> ids;
    for (const auto& i : items)
        ids.push_back(i.id());
    EXPECT_EQ(ids, (std::vector<std::string>{"z:0", "a:2", "a:5", "b:1"}));
}

TEST(Evidence, SortsAreStable) {
    std::vector<Evidence> items = {message("b", 2, 10), message("a", 1, 10)};
    sortByDate(items);
    EXPECT_EQ(items[0].fileID, "b");  // equal dates keep their order
    sortByPosition(items);
    EXPECT_EQ(items[0].fileID, "a");
}

}  // namespace
}  // namespace kinfolio
