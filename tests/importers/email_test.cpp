#include "importers/email.h"

#include <gtest/gtest.h>

#include "model/text.h"

namespace kinfolio::Importer {
namespace {

TEST(LooksLikeEmail, StartsWithHeadersAndHasSenderDateAndSubjectOrRecipient) {
    const std::pair<std::string, bool> cases[] = {
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
        // Only the first 8000 characters are looked at.
        {"From: a\nDate: b\n" + std::string(8000, 'x') + "\nSubject: c\n", false},
    };
    for (const auto& [text, email] : cases)
        EXPECT_EQ(looksLikeEmail(text), email) << text.substr(0, 100);
}

TEST(Emails, CutsAMailboxAtFromLinesAndUndoesOneLevelOfQuoting) {
    const std::string mbox =
        "From sender Mon Jan 6 09:00:00 2025\nSubject: one\n\nfirst\n>From here on\n"
        ">>From keeps deeper quoting\nFrom here on splits\nSubject: two\n\nsecond\n";
    const std::vector<std::string> messages = {
        "Subject: one\n\nfirst\nFrom here on\n>>From keeps deeper quoting",
        "Subject: two\n\nsecond\n"};
    const std::tuple<const char*, std::string, std::vector<std::string>> cases[] = {
        {"a mailbox", mbox, messages},
        {"a mailbox with CR LF", replaceAll(mbox, "\n", "\r\n"), messages},
        {"an .eml is one message, CR LF turned into line feeds",
         "Subject: a\r\nFrom: b\r\n\r\nbody\r\n>From x\r\n",
         {"Subject: a\nFrom: b\n\nbody\n>From x\n"}},
        {"a separator without message is dropped",
         "From a Mon Jan 6 2025\nFrom b Mon Jan 6 2025\nSubject: x\n\ny",
         {"Subject: x\n\ny"}},
        {"only a separator", "From only-a-separator", {}},
    };
    for (const auto& [name, text, expected] : cases)
        EXPECT_EQ(emails(text), expected) << name;
}

TEST(DecodeHeader, DecodesUtf8EncodedWordsOnly) {
    const std::pair<const char*, const char*> cases[] = {
        {"=?UTF-8?B?SGVsbG8=?=", "Hello"},
        {"=?utf-8?q?a_b?=", "a b"},
        {"=?iso-8859-1?Q?caf=E9?=", "=?iso-8859-1?Q?caf=E9?="},
        // The charset is not consulted: a Latin-1 label on UTF-8 bytes still decodes.
        {"=?iso-8859-1?Q?caf=C3=A9?=", "caf\u00e9"},
        {"Re: =?UTF-8?B?SGVsbG8=?= and =?UTF-8?Q?w=C3=B6rld?= !", "Re: Hello and w\u00f6rld !"},
        {"no words here", "no words here"},
        // Strict base64: missing padding and a character outside the alphabet both fail.
        {"=?UTF-8?B?SGVsbG8?=", "=?UTF-8?B?SGVsbG8?="},
        {"=?UTF-8?B?SGV*bG8=?=", "=?UTF-8?B?SGV*bG8=?="},
        {"=?x?Q?=E9?= =?x?Q?=E8?=", "=?x?Q?=E9x?Q?=E8?="},
        {"=?UTF-8?B?SGk=?= =?UTF-8?B?SGk=?=", "Hi Hi"},
    };
    for (const auto& [value, decoded] : cases)
        EXPECT_EQ(decodeHeader(value), decoded) << value;
}

TEST(Email, HeadingAndTextOfOtherMessages) {
    const std::pair<const char*, const char*> cases[] = {
        {"From: Sam\r\nDate: 6 Jan 2025 09:05\r\n\r\nHi", "From: Sam\nSubject: (no subject)|Hi"},
        {"From: Sam\nDate: 6 Jan 2025 09:05\nSubject: A long\n\tsubject\n\nx",
         "From: Sam\nSubject: A long subject|x"},
        // Without a readable date there is no item.
        {"From: Sam\nDate: 2025-01-06\nSubject: x\n\nbody", "none"},
        {"From: Sam\nSubject: x\n\nbody", "none"},
    };
    for (const auto& [message, shown] : cases) {
        auto item = email(message, "f", 1);
        EXPECT_EQ(item ? item->details().heading + "|" + item->text : "none", shown) << message;
    }
}

}  // namespace
}  // namespace kinfolio::Importer
