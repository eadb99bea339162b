#include "scan/date_order.h"

#include <gtest/gtest.h>

#include "importers/whatsapp.h"
#include "support/evidence_error.h"

namespace kinfolio::Scanner {
namespace {

const std::string kNote =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

struct ChronologyCase {
    const char* name;
    const char* chat;
    DateOrder order;
    const char* note;  // empty: none
};

const std::string kMonthFirst =
    "The dates could be day/month or month/day; month first was chosen, because the dates only "
    "make sense as month/day. Change Date order if they look wrong.";
const std::string kDayFirst =
    "The dates could be day/month or month/day; day first was chosen, because the dates only "
    "make sense as day/month. Change Date order if they look wrong.";

TEST(ChatDateOrder, AmbiguousDatesFollowTheChatsChronology) {
    const ChronologyCase cases[] = {
        {"forward only as month/day",
         "3/4/23, 9:00 - A: a\n3/5/23, 9:00 - A: b\n4/1/23, 9:00 - A: c\n", DateOrder::monthFirst,
         kMonthFirst.c_str()},
        {"forward only as day/month",
         "3/4/23, 9:00 - A: a\n4/4/23, 9:00 - A: b\n1/5/23, 9:00 - A: c\n", DateOrder::dayFirst,
         kDayFirst.c_str()},
        {"one day: both readings run forward", "3/4/23, 9:00 - A: a\n3/4/23, 9:05 - A: b\n",
         DateOrder::dayFirst, kNote.c_str()},
        {"as many steps back either way",
         "3/4/23, 9:00 - A: a\n4/3/23, 9:00 - A: b\n3/4/23, 9:00 - A: c\n", DateOrder::dayFirst,
         kNote.c_str()},
        {"years first: the order changes nothing", "2023/3/4 9:00 - A: a\n2023/3/5 9:00 - A: b\n",
         DateOrder::dayFirst, ""},
        {"only month first reads every line",
         "\u0663\u200F/\u0661\u0664\u200F/\u0662\u0663, 9:00 - A: a\n4/4/23, 9:00 - A: b\n",
         DateOrder::monthFirst, ""},
    };
    for (const auto& c : cases) {
        auto reading = readInChatOrder(c.chat, DateOrder::automatic, [&](DateOrder o) {
            return Importer::whatsapp(c.chat, "f", o);
        });
        EXPECT_EQ(reading.order, c.order) << c.name;
        EXPECT_EQ(reading.note.value_or(""), c.note) << c.name;
        EXPECT_TRUE(reading.result.notes.empty()) << c.name;  // every line read as a message
    }
    // A chosen order is used as it is; a chat unreadable both ways gives the
    // day-first reading's error.
    auto chosen = readInChatOrder("3/4/23, 9:00 - A: a\n", DateOrder::monthFirst, [](DateOrder o) {
        return Importer::whatsapp("3/4/23, 9:00 - A: a\n", "f", o);
    });
    EXPECT_EQ(chosen.order, DateOrder::monthFirst);
    EXPECT_FALSE(chosen.note);
    std::string broken = "3/4/23, 9:00 - A: a\n31/31/23, 9:00 - A: b\n";
    EXPECT_EQ(testing::errorOf([&] {
                  readInChatOrder(broken, DateOrder::automatic,
                                  [&](DateOrder o) { return Importer::whatsapp(broken, "f", o); });
              }),
              "Could not read the date on line 2.");
}

}  // namespace
}  // namespace kinfolio::Scanner
