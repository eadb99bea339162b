#include <gtest/gtest.h>

#include "layout/layout.h"
#include "model/calendar.h"
#include "support/pdf_reader.h"

namespace kinfolio {
namespace {

using testing::message;
using testing::readPDF;

const std::string kChat = std::string(64, 'c');

TEST(FileSize, DecimalUnitsAsFileBrowsersShowThem) {
    const std::pair<int64_t, const char*> cases[] = {
        {0, "0 bytes"},    {1, "1 byte"},           {999, "999 bytes"}, {1000, "1 kB"},
        {5300, "5 kB"},    {999499, "999 kB"},      {999600, "1 MB"},   {2400000, "2.4 MB"},
        {2000000, "2 MB"}, {1234567890, "1.23 GB"},
    };
    for (const auto& [bytes, shown] : cases)
        EXPECT_EQ(fileSize(bytes), shown) << bytes;
}

// With the defaults the appendix starts on a new page that the contents
// names, and its notes read exactly so.
TEST(Appendix, DefaultsGiveTheExactNotesOnANewPage) {
    ExportInput input;
    input.settings.timeZoneID = "Europe/London";
    input.files[kChat] = {"chat.txt", kChat, 999};
    input.conversationCount = 1;
    input.items.push_back(message(kChat, 4, *Calendar::makeDate(2025, 5, 6, 7, 8), "Jo", "Hi"));
    std::string bytes = PDFExporter::make(input).data;
    auto pdf = readPDF(bytes);
    ASSERT_EQ(pdf.pages.size(), 2u);  // cover with one short month below, appendix
    EXPECT_NE(pdf.pages[0].find("Hi"), std::string::npos);
    EXPECT_NE(pdf.pages[1].find("How this file was prepared"), std::string::npos);
    EXPECT_EQ(testing::textRightOf(bytes, 0, "How this file was prepared"), "2");
    EXPECT_EQ(testing::textRightOf(bytes, 0, "May 2025"), "1");
    for (const std::string text :
         {"This is a selection, not a complete history. Messages: up to 5 evenly spaced messages "
          "per calendar month from each conversation, each with the message before and after it "
          "for context. All calls are included. All photos, screenshots and videos in the chosen "
          "period are included. No items were added or removed by hand.",
          "Times are shown exactly as written in each source, without time-zone conversion. "
          "Hidden text",
          "Hidden text No text was hidden.",
          "\u201cSource 3, entry 12\u201d points at the source file listed below",
          "the message number in Telegram, Messenger and Instagram exports, counted from the "
          "start of the file across every chat it holds.",
          "they are shown in Europe/London time.",
          "The applicant\u2019s original files were read but never changed.",
          "Source 1 \u00b7 chat.txt", "999 bytes"})
        EXPECT_NE(pdf.flat(1).find(text), std::string::npos) << text;
}

}  // namespace
}  // namespace kinfolio
