#include "layout/pdf_exporter.h"

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "layout/typesetter.h"
#include "model/calendar.h"
#include "support/evidence_error.h"
#include "support/pdf_reader.h"

namespace kinfolio {
namespace {

using testing::message;
using testing::readPDF;

const std::string kChat = std::string(64, 'a');
const std::string kMail = std::string(64, 'b');

Instant at(int month, int day, int hour, int minute = 0) {
    return *Calendar::makeDate(2025, month, day, hour, minute);
}

// A couple's chat over three months, long enough for several pages, and an e-mail.
ExportInput chatInput() {
    ExportInput input;
    input.settings.title = "Our story";
    input.settings.applicant = "Alex Doe";
    input.settings.partner = "Jordan Roe";
    input.settings.reference = "REF-123";
    input.settings.ownerName = "Alex";
    input.settings.timeZoneID = "America/New_York";
    input.files[kChat] = {"chats/WhatsApp Chat with Jordan.txt", kChat, 2400000};
    input.files[kMail] = {"mail/tickets.eml", kMail, 5300};
    input.conversationCount = 1;
    int position = 1;
    input.items.push_back(message(kChat, position++, at(1, 4, 9, 14), "Alex", "Happy new year!"));
    for (int i = 0; i < 90; ++i)
        input.items.push_back(message(
            kChat, position++, at(2, 1 + i / 4, 8 + i % 4, 5), i % 2 ? "Alex" : "Jordan",
            "February note " + std::to_string(i) + ": the weather is lovely and I miss you."));
    Evidence call = message(kChat, position++, at(3, 2, 20), "Jordan", "Voice call");
    call.kind = ItemKind::call;
    call.detailsForWriting().duration = 725;
    input.items.push_back(call);
    Evidence mail = message(kMail, 0, at(3, 3, 10), "", "Here are the tickets for our trip.");
    mail.kind = ItemKind::email;
    mail.detailsForWriting().heading = "From: Alex Doe\nSubject: Tickets";
    input.items.push_back(mail);
    return input;
}

class MadePDF : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        made = PDFExporter::make(chatInput());
        read = readPDF(made.data);
    }
    static inline Output made;
    static inline testing::ReadPDF read;
};

TEST_F(MadePDF, ShowsCoverMessagesCallsEmailAndAppendix) {
    const size_t last = read.pages.size() - 1, any = SIZE_MAX;
    // On the cover, the last page, or any.
    const std::pair<size_t, std::string> cases[] = {
        {0, "Our story"},
        {0, "Applicant: Alex Doe"},
        {0, "Partner / sponsor: Jordan Roe"},
        {0, "Reference: REF-123"},
        {0, "Period: January 2025 \u2013 March 2025"},
        {0, "91 messages from 1 conversation"},
        {0, "Includes: 1 call, 1 email"},
        {0, "Contents"},
        {0, "Check the current official guidance"},
        {any, "Happy new year!"},
        {any, "February note 89: the weather is lovely"},
        {any, "Alex \u00b7 9:14 AM \u00b7 Source 1, entry 1"},
        {any, "Voice call \u00b7 12 min 5 s"},
        {any, "Saturday, February 1, 2025"},
        {any, "Subject: Tickets"},
        {any, "Source 2, entry 0"},
        {last, "Source 1 \u00b7 chats/WhatsApp Chat with Jordan.txt"},
        {last, "SHA-256 " + kChat + " \u00b7 2.4 MB"},
        {last, "Source 2 \u00b7 mail/tickets.eml"},
        {last, "SHA-256 " + kMail + " \u00b7 5 kB"},
        {last, "shown in America/New York time."},
    };
    for (const auto& [page, text] : cases)
        EXPECT_NE((page > last ? read.allFlat() : read.flat(page)).find(text), std::string::npos)
            << text;
}

TEST_F(MadePDF, SameInputGivesTheSameBytesWithOrWithoutProgress) {
    std::vector<std::pair<size_t, size_t>> reports;
    Output again = PDFExporter::make(
        chatInput(), [&reports](size_t done, size_t total) { reports.emplace_back(done, total); });
    EXPECT_EQ(again.data, made.data);
    // One report per drawn page, counting up to the page count.
    ASSERT_EQ(reports.size(), static_cast<size_t>(made.pageCount));
    for (size_t i = 0; i < reports.size(); ++i)
        EXPECT_EQ(reports[i], std::make_pair(i + 1, reports.size()));
}

TEST(PDFExporter, RefusesWithSentencesForTheUser) {
    ExportInput empty = chatInput();
    empty.items.clear();
    EXPECT_EQ(testing::errorOf([&] { PDFExporter::make(empty); }), "Nothing is selected.");
    ExportInput orphan = chatInput();
    orphan.files.erase(kMail);
    EXPECT_EQ(testing::errorOf([&] { PDFExporter::make(orphan); }),
              "The source file for an item is missing. Scan the folder again.");
}

TEST(PDFExporter, LongEmailIsCutWithANote) {
    ExportInput input = chatInput();
    Evidence& mail = input.items.back();
    mail.text = std::string(2499, 'x') + "yz" + "TAIL";
    auto all = readPDF(PDFExporter::make(input).data).allFlat();
    EXPECT_NE(all.find("[\u2026 continues in the original email]"), std::string::npos);
    EXPECT_EQ(all.find("TAIL"), std::string::npos);
    EXPECT_EQ(all.find("yz"), std::string::npos);

    mail.text = std::string(2500, 'x');
    all = readPDF(PDFExporter::make(input).data).allFlat();
    EXPECT_EQ(all.find("continues in the original email"), std::string::npos);
}

TEST(PDFExporter, OtherScriptsAndEmojiPrintWithoutBoxesAndSharp) {
    ExportInput input = chatInput();
    input.items.resize(1);
    input.items[0].text = "你好 こんにちは 안녕하세요 สวัสดี مرحبا \U0001F600";
    std::string bytes;
    {
#if defined(__SANITIZE_ADDRESS__)
        // cairo 1.16 leaks a little while subsetting CJK fonts as it finishes a file.
        __lsan::ScopedDisabler cairoLeaksInCJKSubsetting;
#endif
        bytes = PDFExporter::make(input).data;
    }
    auto pdf = readPDF(bytes);
    // The message follows the contents on the cover page.
    EXPECT_NE(pdf.pages[0].find("안녕하세요"), std::string::npos);
    EXPECT_NE(pdf.pages[0].find("你好"), std::string::npos);
    auto resolutions = testing::imageResolutions(bytes, 0);
    ASSERT_EQ(resolutions.size(), 1u);  // the emoji
    EXPECT_GE(resolutions[0], 4.0);     // at least 288 pixels per inch

    Typesetter type;
    EXPECT_EQ(type.unknownGlyphs("你好 こんにちは 안녕하세요 สวัสดี مرحبا नमस्ते \U0001F600", 10.5), 0);
}

}  // namespace
}  // namespace kinfolio
