#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::scanFiles;

// Each message as "date | heading | text".
std::vector<std::string> emails(const ScanResult& r) {
    std::vector<std::string> lines;
    for (const Evidence& e : r.sources.at(0).items)
        lines.push_back(Calendar::format(e.date, "yyyy-MM-dd HH:mm:ss") + " | " +
                        e.details().heading + " | " + e.text);
    return lines;
}

TEST(EmailSource, LooseEmailsFormOneSourceAndUndatedFilesAreSkipped) {
    ScanResult r = scanFiles({
        {"Mail/note.eml",
         "From: Sam <sam@example.com>\r\nTo: Alex <alex@example.com>\r\n"
         "Subject: =?UTF-8?B?VGlja2V0cw==?=\r\nDate: Tue, 7 Jan 2025 08:15:00 +0100\r\n\r\n"
         "Booked the flights.\r\n"},
        {"Mail/box.mbox",
         "From sam@example.com Mon Jan  6 09:00:00 2025\n"
         "From: Sam\nTo: Alex\nSubject: First\nDate: Mon, 6 Jan 2025 09:00:00 "
         "+0000\n\nHello\n>From the airport\n"
         "From alex@example.com Mon Jan  6 10:00:00 2025\n"
         "From: Alex\nSubject: No date here\n\nignored\n"
         "From alex@example.com Mon Jan 20 21:00:00 2025\n"
         "From: Alex\nSubject: Third\nDate: 20 Jan 2025 21:00\n\nGood night\n"},
        {"saved.txt", "From: Alex\nDate: 15 Jan 2025 12:00:00\nSubject: Saved as text\n\nLunch?\n"},
        {"undated.eml", "From: Sam\nDate: 2025-01-06\nSubject: Old\n\nbody\n"},
        {"letter.txt", "From: Sam\nDate: someday\nSubject: Hi\n\nbody\n"},
    });
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{"Mail/box.mbox | Emails | 4 emails · Jan 2025",
                                        "letter.txt | No dated email found.",
                                        "undated.eml | No dated email found."}));
    const Source& s = r.sources[0];
    EXPECT_EQ(s.id, "emails");
    EXPECT_EQ(s.kind, SourceKind::emails);
    ASSERT_EQ(s.files.size(), 3u);
    EXPECT_EQ(s.files[1].path, "Mail/note.eml");
    EXPECT_EQ(s.files[2].path, "saved.txt");
    EXPECT_EQ(emails(r),
              (std::vector<std::string>{
                  "2025-01-06 09:00:00 | From: Sam\nTo: Alex\nSubject: First | Hello\nFrom the "
                  "airport",
                  "2025-01-07 08:15:00 | From: Sam <sam@example.com>\nTo: Alex "
                  "<alex@example.com>\nSubject: Tickets | Booked the flights.",
                  "2025-01-15 12:00:00 | From: Alex\nSubject: Saved as text | Lunch?",
                  "2025-01-20 21:00:00 | From: Alex\nSubject: Third | Good night"}));
    EXPECT_EQ(s.items[0].kind, ItemKind::email);
    EXPECT_EQ(s.items[0].position, 1);
    EXPECT_EQ(s.items[0].fileID, s.files[0].sha256);
    EXPECT_EQ(s.items[1].sender, "Sam <sam@example.com>");
    EXPECT_EQ(s.items[3].position, 3);  // the undated second message keeps its place
}

// A wide encoding or a byte-order mark does not hide an email; one old
// message in raw ISO Latin-1 costs nothing: each message of a mailbox is
// decoded on its own, by its declared charset, and 8-bit header values as
// Latin-1.
TEST(EmailSource, EachMessageIsDecodedByItsOwnEncoding) {
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string("From: Sam\nDate: 6 Jan 2025 09:05\nSubject: Hi\n\nUTF-16 body\n"))
        utf16 += std::string{c, '\0'};
    struct Case {
        const char* name;
        std::string path, bytes, detail;
        std::vector<std::string> emails;
    } cases[] = {
        {"UTF-16",
         "wide.eml",
         utf16,
         "1 email · Jan 2025",
         {"2025-01-06 09:05:00 | From: Sam\nSubject: Hi | UTF-16 body"}},
        {"byte-order mark in a .txt",
         "letter.txt",
         "\xEF\xBB\xBF"
         "From: Sam\nDate: 6 Jan 2025 09:05\nSubject: Hi\n\nbody\n",
         "1 email · Jan 2025",
         {"2025-01-06 09:05:00 | From: Sam\nSubject: Hi | body"}},
        {"Latin-1 beside UTF-8",
         "archive.mbox",
         "From sam@example.com Mon Jan  6 09:00:00 2025\n"
         "From: Sam\nSubject: New\nDate: Mon, 6 Jan 2025 09:00:00 +0000\n"
         "Content-Type: text/plain; charset=utf-8\n\nCaf\xC3\xA9 at nine\n"
         "From zoe@example.com Sat Mar  1 10:00:00 2003\n"
         "From: Zo\xEB\nSubject: Cr\xE8me br\xFBl\xE9"
         "e\nDate: Sat, 1 Mar 2003 10:00:00 +0100\n"
         "Content-Type: text/plain; charset=ISO-8859-1\n\nCaf\xE9 \xE0 neuf heures\n",
         "2 emails · Mar 2003 – Jan 2025",
         {"2003-03-01 10:00:00 | From: Zoë\nSubject: Crème brûlée | Café à neuf heures",
          "2025-01-06 09:00:00 | From: Sam\nSubject: New | Café at nine"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScanResult r = scanFiles({{c.path, c.bytes}});
        ASSERT_EQ(r.sources.size(), 1u);
        EXPECT_EQ(testing::shown(r), std::vector{c.path + " | Emails | " + c.detail});
        EXPECT_EQ(emails(r), c.emails);
    }
}

}  // namespace
}  // namespace kinfolio::Scanner
