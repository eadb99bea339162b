#include "importers/email.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio::Importer {
namespace {

using namespace Calendar;

std::string written(Instant t) {
    return format(t, "yyyy-MM-dd HH:mm:ss");
}

TEST(LooksLikeEmail, StartsWithHeadersAndHasSenderDateAndSubjectOrRecipient) {
    struct Case {
        std::string_view text;
        bool email;
    } cases[] = {
        {"From: Sam <sam@example.com>\nDate: 6 Jan 2025 09:05\nSubject: Hi", true},
        {"Received: x\nFROM: a\nDATE: b\nTO: c\n", true},
        {"From sam Mon Jan  6 09:00:00 2025\nDate: x\nTo: y\n", true},
        {"From: a\nSubject: b\n", false},         // no date
        {"Date: x\nSubject: b\nTo: c\n", false},  // no sender
        {"From: a\nDate: b\nCc: c\n", false},     // neither subject nor to
        {"[06/01/2025, 09:05:00] Sam: From: me, Date: today", false},
        // A chat that quotes a booking e-mail is still a chat: what a file
        // starts with decides.
        {"05/01/2025, 09:00 - Sam: look\nFrom: Air <a@b.c>\nDate: Sun, 5 Jan 2025 08:00\n"
         "Subject: Your booking\n",
         false},
        {"Dear Sam,\nFrom: a\nDate: b\nTo: c\n", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(looksLikeEmail(c.text), c.email) << c.text;
}

TEST(LooksLikeEmail, LooksOnlyAtTheFirst8000Characters) {
    std::string text = "From: a\nDate: b\n" + std::string(8000, 'x') + "\nSubject: c\n";
    EXPECT_FALSE(looksLikeEmail(text));
}

TEST(Emails, AnEmlIsOneMessageWithCrlfTurnedIntoLineFeeds) {
    auto messages = emails("Subject: a\r\nFrom: b\r\n\r\nbody\r\n>From x\r\n");
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "Subject: a\nFrom: b\n\nbody\n>From x\n");
}

TEST(Emails, CutsAMailboxAtFromLinesAndUndoesOneLevelOfQuoting) {
    std::string mbox =
        "From sender Mon Jan 6 09:00:00 2025\n"
        "Subject: one\n\n"
        "first\n"
        ">From here on\n"
        ">>From keeps deeper quoting\n"
        "From here on splits\n"
        "Subject: two\n\n"
        "second\n";
    auto messages = emails(mbox);
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0], "Subject: one\n\nfirst\nFrom here on\n>>From keeps deeper quoting");
    EXPECT_EQ(messages[1], "Subject: two\n\nsecond\n");
}

TEST(Emails, MailboxWithCrlfReadsLikeOneWithLineFeeds) {
    std::string lf =
        "From a Mon Jan 6 09:00:00 2025\nSubject: one\n\nx\n>From y\n"
        "From b Mon Jan 6 10:00:00 2025\nSubject: two\n\nz\n";
    std::string crlf;
    for (char c : lf)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(emails(crlf), emails(lf));
    EXPECT_EQ(emails(lf).size(), 2u);
}

TEST(Emails, SeparatorWithoutMessageIsDropped) {
    auto messages = emails("From a Mon Jan 6 2025\nFrom b Mon Jan 6 2025\nSubject: x\n\ny");
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "Subject: x\n\ny");
    EXPECT_TRUE(emails("From only-a-separator").empty());
}

TEST(SplitHeaders, FoldsContinuationLinesWithSingleSpaces) {
    auto [headers, body] =
        splitHeaders("Subject: Our trip\r\n   to the coast\r\n\tin May\r\nFrom: Sam\r\n\r\nHi\r\n");
    EXPECT_EQ(headers["subject"], "Our trip to the coast in May");
    EXPECT_EQ(headers["from"], "Sam");
    EXPECT_EQ(body, "Hi\n");
}

TEST(SplitHeaders, FirstOccurrenceWinsButLaterContinuationsExtendIt) {
    auto [headers, body] =
        splitHeaders("Subject: first\nSubject: second\n  more\nTo:  x@y \n\nbody\n\nmore body");
    EXPECT_EQ(headers["subject"], "first more");
    EXPECT_EQ(headers["to"], "x@y");
    EXPECT_EQ(body, "body\n\nmore body");
}

TEST(SplitHeaders, NamesAreLowercasedButNotTrimmedAndOddLinesIgnored) {
    auto [headers, body] = splitHeaders(" orphan continuation\nX-Tag :v\nno colon here\n more\n");
    EXPECT_EQ(headers.count("x-tag"), 0u);
    EXPECT_EQ(headers["x-tag "], "v more");
    EXPECT_EQ(headers.size(), 1u);
    EXPECT_EQ(body, "");
}

TEST(DecodeHeader, DecodesUtf8EncodedWordsOnly) {
    EXPECT_EQ(decodeHeader("=?UTF-8?B?SGVsbG8=?="), "Hello");
    EXPECT_EQ(decodeHeader("=?utf-8?q?a_b?="), "a b");
    EXPECT_EQ(decodeHeader("=?iso-8859-1?Q?caf=E9?="), "=?iso-8859-1?Q?caf=E9?=");
    // The charset is not consulted: a Latin-1 label on UTF-8 bytes still decodes.
    EXPECT_EQ(decodeHeader("=?iso-8859-1?Q?caf=C3=A9?="), "caf\u00e9");
    EXPECT_EQ(decodeHeader("Re: =?UTF-8?B?SGVsbG8=?= and =?UTF-8?Q?w=C3=B6rld?= !"),
              "Re: Hello and w\u00f6rld !");
    EXPECT_EQ(decodeHeader("no words here"), "no words here");
}

TEST(DecodeHeader, StrictBase64LeavesBadWordsAndDropsTheirJoins) {
    // Missing padding and a character outside the alphabet both fail.
    EXPECT_EQ(decodeHeader("=?UTF-8?B?SGVsbG8?="), "=?UTF-8?B?SGVsbG8?=");
    EXPECT_EQ(decodeHeader("=?UTF-8?B?SGV*bG8=?="), "=?UTF-8?B?SGV*bG8=?=");
    EXPECT_EQ(decodeHeader("=?x?Q?=E9?= =?x?Q?=E8?="), "=?x?Q?=E9x?Q?=E8?=");
    EXPECT_EQ(decodeHeader("=?UTF-8?B?SGk=?= =?UTF-8?B?SGk=?="), "Hi Hi");
}

TEST(EmailDate, KeepsTheTimeAsWrittenAndIgnoresTheZone) {
    EXPECT_EQ(written(*emailDate("Mon, 6 Jan 2025 9:05 +0100")), "2025-01-06 09:05:00");
    EXPECT_EQ(written(*emailDate("6 January 2025 09:05:07")), "2025-01-06 09:05:07");
    EXPECT_EQ(written(*emailDate("Sun, 29 Dec 2024 23:59:59 GMT")), "2024-12-29 23:59:59");
    EXPECT_FALSE(emailDate("2025-01-06"));
    EXPECT_FALSE(emailDate(""));
    EXPECT_FALSE(emailDate("31 Feb 2025 10:00"));  // no such day
    EXPECT_FALSE(emailDate("6 Foo 2025 10:00"));   // no such month
}

TEST(Email, MakesAnItemWithItsHeading) {
    auto item = email(
        "From: =?UTF-8?B?U2Ft?= <sam@example.com>\nTo: Alex <alex@example.com>\n"
        "Subject: Dinner\nDate: Mon, 6 Jan 2025 19:30:00 -0500\n\n  See you at eight.  \n",
        "abc", 3);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->kind, ItemKind::email);
    EXPECT_EQ(written(item->date), "2025-01-06 19:30:00");
    EXPECT_FALSE(item->dateIsEstimated);
    EXPECT_EQ(item->sender, "Sam <sam@example.com>");
    EXPECT_EQ(item->text, "See you at eight.");
    EXPECT_EQ(item->fileID, "abc");
    EXPECT_EQ(item->position, 3);
    EXPECT_EQ(item->details().heading,
              "From: Sam <sam@example.com>\nTo: Alex <alex@example.com>\nSubject: Dinner");
    EXPECT_EQ(item->id(), "abc:3");
}

TEST(Email, WithoutRecipientOrSubjectTheHeadingSaysSo) {
    auto item = email("From: Sam\r\nDate: 6 Jan 2025 09:05\r\n\r\nHi", "f", 1);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->details().heading, "From: Sam\nSubject: (no subject)");
    EXPECT_EQ(item->text, "Hi");
}

TEST(Email, FoldedSubjectBecomesOneLine) {
    auto item = email("From: Sam\nDate: 6 Jan 2025 09:05\nSubject: A long\n\tsubject\n\nx", "f", 1);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->details().heading, "From: Sam\nSubject: A long subject");
}

TEST(Email, MessageWithoutReadableDateGivesNoItem) {
    EXPECT_FALSE(email("From: Sam\nDate: 2025-01-06\nSubject: x\n\nbody", "f", 1));
    EXPECT_FALSE(email("From: Sam\nSubject: x\n\nbody", "f", 1));
}

}  // namespace
}  // namespace kinfolio::Importer
