// Importer::date reads the common fixed-width layouts without ICU; these
// cases hold it to the answers of the ICU patterns it stands in for.
#include <gtest/gtest.h>

#include "model/calendar.h"

#include "importers/dates.h"
#include "model/text.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

struct Case {
    const char* text;
    const char* pattern;  // the pattern of the lists that reads it
    DateOrder order;
};

TEST(DateFastPath, AgreesWithThePatternThatReadsTheText) {
    const Case cases[] = {
        {"2025-06-14 09:15:00", "yyyy-MM-dd HH:mm:ss", DateOrder::dayFirst},
        {"2024-02-29 23:59:59", "yyyy-MM-dd HH:mm:ss", DateOrder::monthFirst},
        {"2025-06-14 09:15", "yyyy-MM-dd HH:mm", DateOrder::automatic},
        {"2025-06-14", "yyyy-MM-dd", DateOrder::dayFirst},
        {"2025-06-14T00:00:01", "yyyy-MM-dd'T'HH:mm:ss", DateOrder::dayFirst},
        {"2025-06-14T21:05", "yyyy-MM-dd'T'HH:mm", DateOrder::dayFirst},
        {"14/06/2025 09:15", "d/M/yyyy HH:mm", DateOrder::dayFirst},
        {"05/01/2025 09:15:30", "d/M/yyyy HH:mm:ss", DateOrder::automatic},
        {"05/01/2025 09:15", "M/d/yyyy HH:mm", DateOrder::monthFirst},
        {"12/31/1999 23:00:00", "M/d/yyyy HH:mm:ss", DateOrder::monthFirst},
    };
    for (const auto& c : cases) {
        auto expected = parse(c.text, c.pattern);
        ASSERT_TRUE(expected) << c.text;
        EXPECT_EQ(date(c.text, c.order), expected) << c.text;
    }
}

TEST(DateFastPath, OutOfRangeTextsGetTheSameRefusal) {
    for (const char* text :
         {"2025-02-29 10:00:00", "2025-13-01 10:00", "2025-06-14 24:00", "2025-06-14 10:60",
          "2025-06-14 10:00:60", "0999-06-14", "2025-06-14 09:15:00 +0200", "2025-06-14Z",
          "31/06/2025 09:00", "2025-06-1x", "14/06/2025 09:15:0"}) {
        EXPECT_FALSE(date(text, DateOrder::dayFirst)) << text;
    }
    EXPECT_FALSE(date("14/06/2025 09:15", DateOrder::monthFirst));
}

TEST(DateFastPath, OtherLayoutsStillReachThePatterns) {
    EXPECT_EQ(format(*date(" 2025-06-14 09:15:00\n", DateOrder::dayFirst), "yyyy-MM-dd HH:mm:ss"),
              "2025-06-14 09:15:00");
    EXPECT_EQ(format(*date("5/1/2025 9:05 PM", DateOrder::dayFirst), "yyyy-MM-dd HH:mm"),
              "2025-01-05 21:05");
}

TEST(DetectOrder, DigitsOfOtherScriptsAreCountedNotACrash) {
    // Arabic-Indic 14/01/2025 at the start of a line.
    EXPECT_EQ(detectOrder("\u0661\u0664/\u0660\u0661/\u0662\u0660\u0662\u0665 09:00 - Sam: Hi\n"),
              DateOrder::dayFirst);
    EXPECT_EQ(decimalValue("\uFF12\uFF10\uFF12\uFF15"), 2025);
    EXPECT_EQ(decimalValue("12a"), -1);
    EXPECT_EQ(decimalValue(""), -1);
}

}  // namespace
}  // namespace kinfolio::Importer
