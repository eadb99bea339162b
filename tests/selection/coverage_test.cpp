#include <gtest/gtest.h>

#include "selection/items.h"
#include "selection/selection.h"

namespace kinfolio {
namespace {

using namespace testing;
using Strings = std::vector<std::string>;

TEST(Summary, CountsIntoFourCoarseBuckets) {
    Instant t = at(2025, 1, 5);
    std::vector<Evidence> chosen = {
        message("c", 0, t),
        message("c", 1, t, "Alex"),
        message("c", 2, t),
        item(ItemKind::call, "c", 3, t),
        item(ItemKind::screenshot, "s", 0, t),
        item(ItemKind::screenshot, "s", 1, t),
    };
    EXPECT_EQ(Selection::summary(refs(chosen)), "4 messages, 2 photos");
    EXPECT_EQ(Selection::exportCount(refs(chosen)), 6);
    chosen.push_back(item(ItemKind::email, "e", 0, t));
    chosen.push_back(item(ItemKind::document, "d", 0, t));
    chosen.push_back(item(ItemKind::video, "v", 0, t));
    chosen.push_back(item(ItemKind::photo, "p", 0, t));
    EXPECT_EQ(Selection::summary(refs(chosen)), "4 messages, 3 photos, 1 video, 2 documents");
}

TEST(Summary, SingularOnlyForExactlyOne) {
    Instant t = at(2025, 1, 5);
    std::vector<Evidence> ones = {item(ItemKind::call, "c", 0, t), item(ItemKind::photo, "p", 0, t),
                                  item(ItemKind::email, "e", 0, t)};
    EXPECT_EQ(Selection::summary(refs(ones)), "1 message, 1 photo, 1 document");
    std::vector<Evidence> videos = {item(ItemKind::video, "v", 0, t),
                                    item(ItemKind::video, "v", 1, t)};
    EXPECT_EQ(Selection::summary(refs(videos)), "2 videos");
}

TEST(Summary, SystemLinesAloneAreNothingAndNotExported) {
    std::vector<Evidence> chosen = {message("c", 0, at(2025, 1, 5), ""),
                                    message("c", 1, at(2025, 3, 5), "")};
    EXPECT_EQ(Selection::summary(refs(chosen)), "Nothing");
    EXPECT_EQ(Selection::exportCount(refs(chosen)), 0);
    EXPECT_TRUE(Selection::gapMonths(refs(chosen)).empty());
    EXPECT_EQ(Selection::summary({}), "Nothing");
}

TEST(GapMonths, ListsTheEmptyMonthsBetweenFirstAndLast) {
    std::vector<Evidence> chosen = {message("c", 0, at(2025, 4, 1, 0)),
                                    message("c", 1, at(2025, 1, 31, 23, 59, 59))};
    EXPECT_EQ(Selection::gapMonths(refs(chosen)), (Strings{"Feb 2025", "Mar 2025"}));
    EXPECT_EQ(Selection::gapSentence(Selection::gapMonths(refs(chosen))),
              "Nothing selected for Feb 2025, Mar 2025. Add material for those months if you "
              "have it.");
}

TEST(GapMonths, CrossesYearsAndIgnoresSystemLines) {
    std::vector<Evidence> chosen = {
        item(ItemKind::photo, "p", 0, at(2024, 11, 20)),
        message("c", 0, at(2024, 12, 24), ""),  // does not fill December
        item(ItemKind::email, "e", 0, at(2025, 2, 1)),
        message("c", 1, at(2025, 6, 1), ""),  // does not stretch the span
    };
    EXPECT_EQ(Selection::gapMonths(refs(chosen)), (Strings{"Dec 2024", "Jan 2025"}));
}

TEST(GapMonths, NoneForOneMonthOrNoSelection) {
    EXPECT_TRUE(Selection::gapMonths({}).empty());
    std::vector<Evidence> oneMonth = {message("c", 0, at(2025, 2, 1)),
                                      message("c", 1, at(2025, 2, 28))};
    EXPECT_TRUE(Selection::gapMonths(refs(oneMonth)).empty());
    std::vector<Evidence> nextMonth = {message("c", 0, at(2025, 2, 1)),
                                       message("c", 1, at(2025, 3, 1))};
    EXPECT_TRUE(Selection::gapMonths(refs(nextMonth)).empty());
    EXPECT_EQ(Selection::gapSentence({}), "");
}

TEST(SamplingNote, DefaultsReadExactly) {
    EXPECT_EQ(Selection::samplingNote(Settings{}),
              "This is a selection, not a complete history. Messages: up to 5 evenly spaced "
              "messages per calendar month from each conversation, each with the message before "
              "and after it for context. All calls are included. All photos, screenshots and "
              "videos in the chosen period are included. No items were added or removed by "
              "hand.");
}

TEST(SamplingNote, AllMessagesSampledPhotosAndHandCounts) {
    Settings settings;
    settings.messagesPerMonth = 0;
    settings.photosPerMonth = 12;
    settings.addedItems = {"a:1", "a:2"};
    settings.excludedItems = {"b:1", "b:2", "b:3"};
    EXPECT_EQ(Selection::samplingNote(settings),
              "This is a selection, not a complete history. All messages and calls in the chosen "
              "period are included. Photos, screenshots and videos: up to 12 evenly spaced per "
              "calendar month. The applicant then added 2 and removed 3 item(s) by hand.");
    settings.addedItems.clear();
    settings.excludedItems = {"b:1"};
    EXPECT_NE(Selection::samplingNote(settings).find(" added 0 and removed 1 item(s) by hand."),
              std::string::npos);
}

}  // namespace
}  // namespace kinfolio
