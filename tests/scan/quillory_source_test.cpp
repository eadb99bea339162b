#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

// Without the report beside it, messages.csv is a plain chat spreadsheet.
TEST(QuillorySource, OnlyTheReportMakesAnExportAndARefusalIsOneSkippedFile) {
    ScanResult r = testing::scanFiles(
        {{"a/messages.csv", "date,sender,text\n2025-06-14 09:15,Sam,Hi\n"},
         {"b/messages.csv", "date,sender,text\n2025-06-15 09:15,Alex,Hi\n"},
         {"b/verification.txt", "Some other report\n"},
         {"Sam/messages.csv",
          "date_local,direction,sender,text,attachments\n2025-06-14 09:15:00,event,,Sam joined,\n"},
         {"Sam/verification.txt", "Quillory verification report\nConversation: Sam Lee\n"},
         {"Sam/export.pdf", "%PDF-1.4"},
         {"Sam/attachments/IMG_1.jpg", "\xFF\xD8\xFF\xE0 not really a JPEG"}},
        DateOrder::dayFirst);
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "a/messages.csv | Sam | 1 message · Jun 2025",
                  "b/messages.csv | Alex | 1 message · Jun 2025",
                  "Sam/messages.csv | Looks like a Quillory export, but: CSV has no messages.",
                  "b/verification.txt | Text file that is not a chat export."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
