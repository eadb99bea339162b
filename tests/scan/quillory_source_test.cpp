#include "support/scan_folder.h"

namespace kinfolio::Scanner {
namespace {

const std::string kHeader = "date_local,direction,sender,text,attachments\n";
const std::string kReport = "Quillory verification report\nConversation: Sam Lee\n";
const std::string kPhoto = "\xFF\xD8\xFF\xE0 not really a JPEG";

// The export's folder is one source: its messages.csv with the attachments
// it names (inside the export only); the PDF, the report and the files no
// message names are part of it and never listed on their own.
TEST(QuillorySource, ExportFolderBecomesOneSourceWithItsAttachments) {
    testing::TempFolder dir;
    ScanResult r = testing::scanFiles(
        dir, {{"Sam/messages.csv",
               kHeader + "2025-06-14 09:15:00 +0200,incoming,Sam Lee,Look,IMG_1.jpg\n"
                         "2025-06-14 09:16:00 +0200,event,,Sam joined,\n"
                         "2025-06-14 09:17:00 +0200,outgoing,Alex Morgan,Nice,../outside.jpg\n"
                         "2025-06-14 09:18:00 +0200,outgoing,Alex Morgan,Here,/etc/hostname\n"
                         "2025-06-14 09:19:00 +0200,incoming,Sam Lee,Beside,beside.jpg\n"},
              {"Sam/beside.jpg", kPhoto + " beside"},
              {"Sam/verification.txt", kReport},
              {"Sam/Sam Lee.pdf", "%PDF-1.4 export of the chat"},
              {"Sam/attachments/IMG_1.jpg", kPhoto},
              {"Sam/attachments/IMG_9.jpg", kPhoto + " never named"},
              {"outside.jpg", kPhoto + " loose"}});
    const Source* s = testing::sourceNamed(r, "Sam Lee & Alex Morgan");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->kind, SourceKind::quillory);
    // The loose photo beside the export is still the scan's to handle.
    EXPECT_EQ(testing::shown(r),
              (std::vector<std::string>{
                  "Sam/messages.csv | Sam Lee & Alex Morgan | iMessage · 4 messages · Jun 2025",
                  "outside.jpg | Image could not be opened."}));
    EXPECT_TRUE(s->notes.empty());
    ASSERT_EQ(s->files.size(), 3u);
    EXPECT_EQ(s->files[1], (FileRecord{"Sam/attachments/IMG_1.jpg", sha256Hex(kPhoto),
                                       static_cast<int64_t>(kPhoto.size())}));
    ASSERT_EQ(s->items.size(), 4u);
    EXPECT_EQ(s->items[0].details().imageURL, dir.path() + "/Sam/attachments/IMG_1.jpg");
    EXPECT_EQ(s->items[0].details().attachmentID, sha256Hex(kPhoto));
    EXPECT_FALSE(s->items[1].details().imageURL);
    EXPECT_FALSE(s->items[2].details().imageURL);
    EXPECT_EQ(s->items[3].details().imageURL, dir.path() + "/Sam/beside.jpg");
    EXPECT_EQ(s->items[0].position, 2);  // rows counted from the header
    EXPECT_EQ(s->items[1].position, 4);
}

// Without the report beside it, messages.csv is a plain chat spreadsheet.
TEST(QuillorySource, OnlyTheReportMakesAnExportAndARefusalIsOneSkippedFile) {
    ScanResult r = testing::scanFiles(
        {{"a/messages.csv", "date,sender,text\n2025-06-14 09:15,Sam,Hi\n"},
         {"b/messages.csv", "date,sender,text\n2025-06-15 09:15,Alex,Hi\n"},
         {"b/verification.txt", "Some other report\n"},
         {"Sam/messages.csv", kHeader + "2025-06-14 09:15:00,event,,Sam joined,\n"},
         {"Sam/verification.txt", kReport},
         {"Sam/export.pdf", "%PDF-1.4"},
         {"Sam/attachments/IMG_1.jpg", kPhoto}},
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
