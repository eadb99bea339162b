#include "model/evidence.h"

#include <gtest/gtest.h>

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

TEST(Evidence, IdJoinsFileAndPositionAndSystemItemsAreMessagesWithoutSender) {
    EXPECT_EQ(message("ab12", 7).id(), "ab12:7");
    EXPECT_EQ(message("ab12", -1).id(), "ab12:-1");
    Evidence system = message("f", 1, 0, "");
    EXPECT_TRUE(system.isSystem());
    EXPECT_FALSE(message("f", 1).isSystem());
    system.kind = ItemKind::call;
    EXPECT_FALSE(system.isSystem());
}

// Details sit behind a pointer that most items leave empty: absent details
// equal empty ones, and text boxes compare member by member.
TEST(Evidence, EqualityLooksThroughTheDetails) {
    Evidence plain = message("f", 1), touched = plain;
    touched.detailsForWriting();
    EXPECT_EQ(plain, touched);
    EXPECT_EQ(touched, plain);
    EXPECT_EQ(plain.details(), EvidenceDetails{});
    touched.detailsForWriting().duration = 0.0;
    EXPECT_NE(plain, touched);
    EXPECT_NE(touched, plain);
    // Reading through a shared empty instance must leave it empty for others.
    EXPECT_FALSE(message("g", 2).details().duration);

    Evidence a = message("f", 1), b = a;
    a.detailsForWriting().textBoxes.push_back({"hi", 0.1, 0.2, 0.3, 0.4});
    b.detailsForWriting().textBoxes.push_back({"hi", 0.1, 0.2, 0.3, 0.4});
    EXPECT_EQ(a, b);
    b.detailsForWriting().textBoxes[0].height = 0.5;
    EXPECT_NE(a, b);
}

TEST(Evidence, CopiesOwnTheirDetails) {
    Evidence a = message("f", 1);
    a.detailsForWriting().attachmentName = "IMG_1.jpg";
    a.detailsForWriting().textBoxes.push_back({"hi", 0, 0, 1, 1});
    Evidence copy = a;
    Evidence assigned = message("g", 2);
    assigned.detailsForWriting().heading = "From: Sam";
    assigned = a;
    EXPECT_EQ(copy, a);
    EXPECT_EQ(assigned, a);
    EXPECT_EQ(assigned.details().heading, "");

    a.detailsForWriting().attachmentName = "IMG_2.jpg";
    a.detailsForWriting().textBoxes.clear();
    EXPECT_EQ(copy.details().attachmentName, "IMG_1.jpg");
    EXPECT_EQ(assigned.details().textBoxes.size(), 1u);
    EXPECT_NE(copy, a);

    Evidence self = copy;
    self = *&self;
    EXPECT_EQ(self, copy);
    Evidence moved = std::move(copy);
    EXPECT_EQ(moved.details().attachmentName, "IMG_1.jpg");
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
