#include "importers/whatsapp.h"
#include "importers/whatsapp_line.h"

#include <gtest/gtest.h>

#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using enum DateOrder;
using testing::itemLines;

TEST(WhatsApp, ReadsEachPhonesLinesToMessages) {
    using Lines = std::vector<std::string>;
    const std::tuple<const char*, std::string, DateOrder, Lines, Lines> cases[] = {
        {"iPhone lines; colons after the sender's belong to the text",
         "[05/01/2025, 09:00:00] Alex Morgan: Did you land safely?\n"
         "[05/01/2025, 09:04:00] Sam Lee: Yes: just now: tired\n",
         dayFirst,
         {"1 2025-01-05 09:00:00 Alex Morgan: Did you land safely?",
          "2 2025-01-05 09:04:00 Sam Lee: Yes: just now: tired"},
         {}},
        {"Android lines with hyphen, en dash, narrow space and dotted marker",
         "5/1/25, 9:04 PM - Sam Lee: hyphen\n5/1/25, 9:05\u202FPM - Sam Lee: narrow space\n"
         "5/1/25, 9:06 PM \u2013 Alex: en dash\n5/1/25, 9:07 p.m. - Alex: dotted\n",
         monthFirst,
         {"1 2025-05-01 21:04:00 Sam Lee: hyphen", "2 2025-05-01 21:05:00 Sam Lee: narrow space",
          "3 2025-05-01 21:06:00 Alex: en dash", "4 2025-05-01 21:07:00 Alex: dotted"},
         {}},
        {"continuation lines join the message with line feeds, whatever the line ends",
         "[05/01/2025, 09:00:00] Alex: Packing now\r\nBring the blue scarf, it's cold here.\r\n"
         "\r\nSee you\r[05/01/2025, 09:10:00] Sam: ok",
         dayFirst,
         {"1 2025-01-05 09:00:00 Alex: Packing now\nBring the blue scarf, it's cold here.\n\n"
          "See you",
          "5 2025-01-05 09:10:00 Sam: ok"},
         {}},
        {"system lines have no sender; invisible marks are removed everywhere",
         "\uFEFF[05/01/2025, 09:00:00] Messages and calls are end-to-end encrypted.\n"
         "[05/01/2025, 09:01:00] \u200ESam Lee changed the group name\n"
         "[05/01/2025, 09:02:00] \u200ESam:\u200E hi\u200E\n",
         dayFirst,
         {"1 2025-01-05 09:00:00 note: Messages and calls are end-to-end encrypted.",
          "2 2025-01-05 09:01:00 note: Sam Lee changed the group name",
          "3 2025-01-05 09:02:00 Sam: hi"},
         {}},
        {"a title line before the first message is a note",
         "WhatsApp Chat with Sam\n\n[05/01/2025, 09:00:00] Sam: hi\n",
         dayFirst,
         {"3 2025-01-05 09:00:00 Sam: hi"},
         {"Ignored header line 1."}},
    };
    for (const auto& [name, text, order, items, notes] : cases) {
        SCOPED_TRACE(name);
        auto r = whatsapp(text, "abc", order);
        EXPECT_EQ(itemLines(r.items), items);
        EXPECT_EQ(r.notes, notes);
        EXPECT_EQ(r.items.at(0).fileID, "abc");
    }
}

TEST(WhatsApp, RefusalsNameTheLine) {
    const std::tuple<const char*, DateOrder, const char*> cases[] = {
        {"[05/01/2025, 09:00:00] Sam: hi\n05/01/2025 Unsupported\n", dayFirst,
         "Unsupported timestamp on line 2."},
        {"[05/01/2025, 09:00:00] Sam: hi\n[31/02/2025, 09:00:00] Sam: no\n", dayFirst,
         "Could not read the date on line 2."},
        {"[13/01/2025, 09:00:00] Sam: hi\n", monthFirst, "Could not read the date on line 1."},
        {"just some text\n\nmore\n", dayFirst, "No WhatsApp messages found."},
        {"", dayFirst, "No WhatsApp messages found."},
    };
    for (const auto& [text, order, message] : cases)
        EXPECT_EQ(testing::errorOf([&] { whatsapp(text, "f", order); }), message) << text;
}

// Each message gets the attachment it names, in whichever of its lines,
// and no other message's.
TEST(WhatsApp, MessagesNameTheirOwnAttachments) {
    const std::string at = "[05/01/2025, 09:00:00] ";
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {at + "Sam: <attached: 00000003-PHOTO.jpg>\n" + at + "Alex: nice\n",
         {"00000003-PHOTO.jpg", ""}},
        {at + "Sam: hi\n" + at + "Alex: \u200E<attached: 00000004-VIDEO.mp4>\n",
         {"", "00000004-VIDEO.mp4"}},
        {at + "Sam: look at this long first line, then\n<attached: a.pdf>\n" + at + "Alex: ok",
         {"a.pdf", ""}},
        {"5/1/25, 9:04 - Sam: IMG-20250105-WA0001.jpg (file attached)\n5/1/25, 9:05 - Sam: ok\n",
         {"IMG-20250105-WA0001.jpg", ""}},
        {at + "Sam (work): a <b> c (d)\n" + at + "Sam: caf\u00e9 (with \u00e9)\n", {"", ""}},
    };
    for (const auto& [text, names] : cases) {
        auto r = whatsapp(text, "f", dayFirst);
        std::vector<std::string> got;
        for (const auto& item : r.items)
            got.push_back(item.details().attachmentName.value_or(""));
        EXPECT_EQ(got, names) << text;
    }
}

// Android's "p.m." is read as PM; a marker spelt any other way is left
// for the locale forms to read.
TEST(WhatsApp, NormalisesOnlyExactDottedMarkers) {
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 P.M."), "5/1/25 9:04 PM");
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 a.m."), "5/1/25 9:04 AM");
    EXPECT_EQ(normaliseTimestamp("5/1/25, 9:04 p. m."), "5/1/25 9:04 p. m.");
}

// A line of tens of megabytes (a pasted file, a hostile export) is one
// message like any other.
TEST(WhatsApp, AVeryLongLineIsOneMessage) {
    std::string text = "[05/01/2025, 09:00:00] Sam: " + std::string(30'000'000, 'x') +
                       "\n[05/01/2025, 09:01:00] Alex: short\n" + std::string(30'000'000, 'y');
    auto r = whatsapp(text, "f", dayFirst);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0].text.size(), 30'000'000u);
    EXPECT_EQ(r.items[1].text, "short\n" + std::string(30'000'000, 'y'));
}

}  // namespace
}  // namespace kinfolio::Importer
