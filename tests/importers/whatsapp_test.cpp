#include "importers/whatsapp.h"

#include <gtest/gtest.h>

#include "importers/whatsapp_line.h"
#include "model/calendar.h"
#include "support/evidence_error.h"
#include "support/temp_folder.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

Instant at(int y, int mo, int d, int h, int mi, int s = 0) {
    return *makeDate(y, mo, d, h, mi, s);
}

std::string errorOf(std::string_view text, DateOrder order = DateOrder::dayFirst) {
    return testing::errorOf([&] { whatsapp(text, "f", order); });
}

TEST(WhatsApp, ReadsIPhoneLinesWithSenderTextAndPosition) {
    auto r = whatsapp(
        "[05/01/2025, 09:00:00] Alex Morgan: Did you land safely?\n"
        "[05/01/2025, 09:04:00] Sam Lee: Yes: just now: tired\n",
        "abc", DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0].sender, "Alex Morgan");
    EXPECT_EQ(r.items[0].text, "Did you land safely?");
    EXPECT_EQ(r.items[0].date, at(2025, 1, 5, 9, 0));
    EXPECT_EQ(r.items[0].fileID, "abc");
    EXPECT_EQ(r.items[0].position, 1);
    EXPECT_EQ(r.items[1].sender, "Sam Lee");
    EXPECT_EQ(r.items[1].text, "Yes: just now: tired");
    EXPECT_EQ(r.items[1].position, 2);
    EXPECT_FALSE(r.items[1].details().attachmentName);
    EXPECT_TRUE(r.notes.empty());
}

TEST(WhatsApp, ReadsAndroidLinesWithHyphenEnDashAndNarrowSpace) {
    auto r = whatsapp(
        "5/1/25, 9:04 PM - Sam Lee: hyphen\n"
        "5/1/25, 9:05\u202FPM - Sam Lee: narrow space\n"
        "5/1/25, 9:06 PM \u2013 Alex: en dash\n"
        "5/1/25, 9:07 p.m. - Alex: dotted\n",
        "f", DateOrder::monthFirst);
    ASSERT_EQ(r.items.size(), 4u);
    EXPECT_EQ(r.items[0].date, at(2025, 5, 1, 21, 4));
    EXPECT_EQ(r.items[1].date, at(2025, 5, 1, 21, 5));
    EXPECT_EQ(r.items[1].text, "narrow space");
    EXPECT_EQ(r.items[2].sender, "Alex");
    EXPECT_EQ(r.items[2].text, "en dash");
    EXPECT_EQ(r.items[3].date, at(2025, 5, 1, 21, 7));
}

TEST(WhatsApp, ContinuationLinesJoinTheMessageWithLineFeeds) {
    auto r = whatsapp(
        "[05/01/2025, 09:00:00] Alex: Packing now\r\n"
        "Bring the blue scarf, it's cold here.\r\n"
        "\r\n"
        "See you\r"
        "[05/01/2025, 09:10:00] Sam: ok",
        "f", DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0].text, "Packing now\nBring the blue scarf, it's cold here.\n\nSee you");
    EXPECT_EQ(r.items[0].position, 1);
    EXPECT_EQ(r.items[1].position, 5);
}

TEST(WhatsApp, SystemLinesHaveNoSender) {
    auto r = whatsapp(
        "[05/01/2025, 09:00:00] Messages and calls are end-to-end encrypted.\n"
        "[05/01/2025, 09:01:00] \u200ESam Lee changed the group name\n",
        "f", DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0].sender, "");
    EXPECT_EQ(r.items[0].text, "Messages and calls are end-to-end encrypted.");
    EXPECT_TRUE(r.items[1].isSystem());
    EXPECT_EQ(r.items[1].text, "Sam Lee changed the group name");
}

TEST(WhatsApp, InvisibleMarksAreRemovedEverywhere) {
    auto r = whatsapp("\uFEFF[05/01/2025, 09:00:00] \u200ESam:\u200E hi\u200E\n", "f",
                      DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0].sender, "Sam");
    EXPECT_EQ(r.items[0].text, "hi");
}

TEST(WhatsApp, TitleLineBeforeTheFirstMessageIsANote) {
    auto r = whatsapp("WhatsApp Chat with Sam\n\n[05/01/2025, 09:00:00] Sam: hi\n", "f",
                      DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.notes, std::vector<std::string>{"Ignored header line 1."});
    EXPECT_EQ(r.items[0].position, 3);
}

TEST(WhatsApp, RefusalsNameTheLine) {
    EXPECT_EQ(errorOf("[05/01/2025, 09:00:00] Sam: hi\n05/01/2025 Unsupported\n"),
              "Unsupported timestamp on line 2.");
    EXPECT_EQ(errorOf("[05/01/2025, 09:00:00] Sam: hi\n[31/02/2025, 09:00:00] Sam: no\n"),
              "Could not read the date on line 2.");
    EXPECT_EQ(errorOf("[13/01/2025, 09:00:00] Sam: hi\n", DateOrder::monthFirst),
              "Could not read the date on line 1.");
    EXPECT_EQ(errorOf("just some text\n\nmore\n"), "No WhatsApp messages found.");
    EXPECT_EQ(errorOf(""), "No WhatsApp messages found.");
}

TEST(WhatsApp, NormalisesOnlyExactDottedMarkers) {
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 P.M."), "5/1/25 9:04 PM");
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 a.m."), "5/1/25 9:04 AM");
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 p. m."), "5/1/25 9:04 p. m.");
}

TEST(WhatsApp, RecognisesChatsByTheirFirstLines) {
    EXPECT_TRUE(looksLikeWhatsApp("[05/01/2025, 09:00:00] Sam: hi\n[05/01/2025, 09:01:00] A: b\n"));
    EXPECT_TRUE(looksLikeWhatsApp("5/1/25, 9:04 PM - Sam: only one\n"));
    EXPECT_FALSE(looksLikeWhatsApp("Dear Sam,\nhow are you\n5/1/25, 9:04 PM - Sam: hi\nbye\n"));
}

// A line of tens of megabytes (a pasted file, a hostile export) is one
// message like any other.
TEST(WhatsApp, AVeryLongLineIsOneMessage) {
    std::string text = "[05/01/2025, 09:00:00] Sam: " + std::string(30'000'000, 'x') +
                       "\n[05/01/2025, 09:01:00] Alex: short\n" + std::string(30'000'000, 'y');
    auto r = whatsapp(text, "f", DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0].text.size(), 30'000'000u);
    EXPECT_EQ(r.items[1].text, "short\n" + std::string(30'000'000, 'y'));
}

TEST(WhatsApp, ItemsOfOneChatShareTheirFileID) {
    auto r = whatsapp("[05/01/2025, 09:00:00] Alex: hi\n[05/01/2025, 09:01:00] Sam: hello\n",
                      std::string(64, 'a'), DateOrder::dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[1].fileID, std::string(64, 'a'));
    EXPECT_EQ(&r.items[0].fileID.str(), &r.items[1].fileID.str());
}

TEST(WhatsApp, ReleasingReadPagesOfAMappedChatChangesNoItem) {
    // Several megabytes, so pages are released mid-chat, with messages over
    // several lines crossing the released boundaries.
    std::string text;
    for (int i = 0; text.size() < 3'500'000; ++i) {
        text += "[05/01/2025, 09:" + std::to_string(10 + i % 50) + ":00] " +
                (i % 2 ? "Sam Lee" : "Alex Morgan") + ": message " + std::to_string(i);
        if (i % 7 == 0) text += "\nand a second line\n\nafter an empty one";
        text += "\n";
    }
    testing::TempFolder dir;
    auto mapped = MappedFile::open(dir.write("_chat.txt", text));
    ASSERT_TRUE(mapped);
    auto released = whatsapp(mapped->bytes(), "f", DateOrder::dayFirst, &*mapped);
    auto plain = whatsapp(text, "f", DateOrder::dayFirst);
    ASSERT_GT(plain.items.size(), 40000u);
    EXPECT_TRUE(released.items == plain.items);
    EXPECT_EQ(released.notes, plain.notes);
    EXPECT_EQ(mapped->bytes(), text);
}

}  // namespace
}  // namespace kinfolio::Importer
