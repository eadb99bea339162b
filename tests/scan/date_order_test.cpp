#include "scan/date_order.h"

#include <gtest/gtest.h>

#include "importers/whatsapp.h"
#include "support/evidence_error.h"

namespace kinfolio::Scanner {
namespace {

using enum DateOrder;

const std::string kNote =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";
const std::string kMonthFirst =
    "The dates could be day/month or month/day; month first was chosen, because the dates only "
    "make sense as month/day. Change Date order if they look wrong.";
const std::string kDayFirst =
    "The dates could be day/month or month/day; day first was chosen, because the dates only "
    "make sense as day/month. Change Date order if they look wrong.";

// The chat read as a WhatsApp export in the order asked for.
auto readChat(const std::string& chat, DateOrder order) {
    return readInChatOrder(chat, order,
                           [&](DateOrder o) { return Importer::whatsapp(chat, "f", o); });
}

TEST(ChatDateOrder, AmbiguousDatesFollowTheChatsChronology) {
    const std::tuple<const char*, const char*, DateOrder, std::string> cases[] = {
        {"forward only as month/day",
         "3/4/23, 9:00 - A: a\n3/5/23, 9:00 - A: b\n4/1/23, 9:00 - A: c\n", monthFirst,
         kMonthFirst},
        {"forward only as day/month",
         "3/4/23, 9:00 - A: a\n4/4/23, 9:00 - A: b\n1/5/23, 9:00 - A: c\n", dayFirst, kDayFirst},
        {"one day: both readings run forward", "3/4/23, 9:00 - A: a\n3/4/23, 9:05 - A: b\n",
         dayFirst, kNote},
        {"as many steps back either way",
         "3/4/23, 9:00 - A: a\n4/3/23, 9:00 - A: b\n3/4/23, 9:00 - A: c\n", dayFirst, kNote},
        {"years first: the order changes nothing", "2023/3/4 9:00 - A: a\n2023/3/5 9:00 - A: b\n",
         dayFirst, ""},
        {"only month first reads every line",
         "\u0663\u200F/\u0661\u0664\u200F/\u0662\u0663, 9:00 - A: a\n4/4/23, 9:00 - A: b\n",
         monthFirst, ""},
    };
    for (const auto& [name, chat, order, note] : cases) {
        auto reading = readChat(chat, automatic);
        EXPECT_EQ(reading.order, order) << name;
        EXPECT_EQ(reading.note.value_or(""), note) << name;
        EXPECT_TRUE(reading.result.notes.empty()) << name;  // every line read as a message
    }
    // A chosen order is used as it is; a chat unreadable both ways gives the
    // day-first reading's error.
    auto chosen = readChat("3/4/23, 9:00 - A: a\n", monthFirst);
    EXPECT_EQ(chosen.order, monthFirst);
    EXPECT_FALSE(chosen.note);
    EXPECT_EQ(testing::errorOf(
                  [] { readChat("3/4/23, 9:00 - A: a\n31/31/23, 9:00 - A: b\n", automatic); }),
              "Could not read the date on line 2.");
}

// Dates that tell the order decide it with one reading: the reader's own
// look at the lines must agree with the whole chat's, blank lines and
// Windows line ends included.
TEST(ChatDateOrder, DatesThatTellTheOrderAreReadOnce) {
    const std::tuple<const char*, std::string, DateOrder, int> cases[] = {
        {"a day above 12", "3/4/23, 9:00 - A: a\n13/4/23, 9:00 - A: b\n", dayFirst, 1},
        {"a month above 12", "3/4/23, 9:00 - A: a\n4/13/23, 9:00 - A: b\n", monthFirst, 1},
        {"blank lines inside a message", "[13/4/23, 9:00:00] A: a\n\nb\n\n", dayFirst, 1},
        {"Windows line ends", "4/13/23, 9:00 - A: a\r\nb\r\n4/14/23, 9:00 - A: c\r\n", monthFirst,
         1},
        // Read both ways: the reader drops the mark, the look does not.
        {"a mark before a line's date hides it from the look",
         "\u200E4/13/23, 9:00 - A: a\n3/4/23, 9:00 - A: b\n", monthFirst, 2},
        // A break that only the expression sees leaves the look to it.
        {"a line separator in a message", "4/13/23, 9:00 - A: a\u2028b\n", monthFirst, 1},
    };
    for (const auto& [name, chat, order, reads] : cases) {
        int count = 0;
        auto reading = readInChatOrder(chat, automatic, [&](DateOrder o) {
            ++count;
            return Importer::whatsapp(chat, "f", o);
        });
        EXPECT_EQ(reading.order, order) << name;
        EXPECT_EQ(count, reads) << name;
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
