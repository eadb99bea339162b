#include <gtest/gtest.h>

#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

using testing::TempFolder;

const std::string kHeader = "date_local,direction,sender,text,attachments\n";
const std::string kReport = "Quillory verification report\nConversation: Sam Lee\n";
const std::string kPhoto = "\xFF\xD8\xFF\xE0 not really a JPEG";

bool listsPath(const ScanResult& result, const std::string& path) {
    for (const auto& s : result.sources)
        for (const auto& f : s.files)
            if (f.path == path) return true;
    for (const auto& s : result.skipped)
        if (s.path == path) return true;
    return false;
}

TEST(QuillorySource, ExportFolderBecomesOneSourceWithItsAttachment) {
    TempFolder dir;
    dir.write("Sam/messages.csv", kHeader +
                                      "2025-06-14 09:15:00 +0200,incoming,Sam Lee,Look,IMG_1.jpg\n"
                                      "2025-06-14 09:16:00 +0200,event,,Sam joined,\n"
                                      "2025-06-14 09:17:00 +0200,outgoing,Alex Morgan,Nice,\n");
    dir.write("Sam/verification.txt", kReport);
    dir.write("Sam/Sam Lee.pdf", "%PDF-1.4 export of the chat");
    std::string photo = dir.write("Sam/attachments/IMG_1.jpg", kPhoto);
    dir.write("Sam/attachments/IMG_9.jpg", kPhoto + " never named");

    std::string before = testing::folderFingerprint(dir.path());
    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    EXPECT_EQ(testing::folderFingerprint(dir.path()), before);
    EXPECT_TRUE(result.skipped.empty());
    ASSERT_EQ(result.sources.size(), 1u);
    const Source& s = result.sources[0];
    EXPECT_EQ(s.kind, SourceKind::quillory);
    EXPECT_EQ(s.name, "Sam Lee & Alex Morgan");
    EXPECT_EQ(s.detail, "iMessage \u00B7 2 messages \u00B7 Jun 2025");
    EXPECT_TRUE(s.notes.empty());
    ASSERT_EQ(s.files.size(), 2u);
    EXPECT_EQ(s.files[0].path, "Sam/messages.csv");
    EXPECT_EQ(s.files[1].path, "Sam/attachments/IMG_1.jpg");
    EXPECT_EQ(s.files[1].sha256, sha256Hex(kPhoto));
    ASSERT_EQ(s.items.size(), 2u);
    EXPECT_EQ(s.items[0].details().imageURL, photo);
    EXPECT_EQ(s.items[0].details().attachmentID, sha256Hex(kPhoto));
    EXPECT_EQ(s.items[0].position, 2);
    EXPECT_EQ(s.items[1].position, 4);
    EXPECT_FALSE(s.items[1].details().imageURL);
}

TEST(QuillorySource, AttachmentNamesResolveInsideTheExportOnly) {
    TempFolder dir;
    dir.write("Export/messages.csv", kHeader +
                                         "2025-06-14 09:15:00,incoming,Sam,One,beside.jpg\n"
                                         "2025-06-14 09:16:00,incoming,Sam,Two,../outside.jpg\n"
                                         "2025-06-14 09:17:00,incoming,Sam,Three,/etc/hostname\n");
    dir.write("Export/verification.txt", kReport);
    dir.write("Export/beside.jpg", kPhoto);
    dir.write("outside.jpg", kPhoto + " loose");

    ScanResult result = scan(dir.path(), DateOrder::automatic, "UTC");
    const Source* export_ = nullptr;
    for (const auto& s : result.sources)
        if (s.kind == SourceKind::quillory) export_ = &s;
    ASSERT_NE(export_, nullptr);
    ASSERT_EQ(export_->items.size(), 3u);
    EXPECT_TRUE(export_->items[0].details().imageURL);
    EXPECT_FALSE(export_->items[1].details().imageURL);
    EXPECT_FALSE(export_->items[2].details().imageURL);
    ASSERT_EQ(export_->files.size(), 2u);
    EXPECT_EQ(export_->files[1].path, "Export/beside.jpg");
    // The loose photo beside the export is still the scan's to handle.
    EXPECT_TRUE(listsPath(result, "outside.jpg"));
}

TEST(QuillorySource, MessagesCsvWithoutTheReportIsAPlainChatSpreadsheet) {
    TempFolder dir;
    dir.write("a/messages.csv", "date,sender,text\n2025-06-14 09:15,Sam,Hi\n");
    dir.write("b/messages.csv", "date,sender,text\n2025-06-15 09:15,Alex,Hi\n");
    dir.write("b/verification.txt", "Some other report\n");
    ScanResult result = scan(dir.path(), DateOrder::dayFirst, "UTC");
    ASSERT_EQ(result.sources.size(), 2u);
    EXPECT_EQ(result.sources[0].kind, SourceKind::chatCSV);
    EXPECT_EQ(result.sources[1].kind, SourceKind::chatCSV);
    EXPECT_TRUE(listsPath(result, "b/verification.txt"));
}

TEST(QuillorySource, RefusedExportIsOneSkippedFile) {
    TempFolder dir;
    dir.write("Sam/messages.csv", kHeader + "2025-06-14 09:15:00,event,,Sam joined,\n");
    dir.write("Sam/verification.txt", kReport);
    dir.write("Sam/export.pdf", "%PDF-1.4");
    dir.write("Sam/attachments/IMG_1.jpg", kPhoto);
    ScanResult result = scan(dir.path(), DateOrder::dayFirst, "UTC");
    EXPECT_TRUE(result.sources.empty());
    ASSERT_EQ(result.skipped.size(), 1u);
    EXPECT_EQ(result.skipped[0],
              (SkippedFile{"Sam/messages.csv",
                           "Looks like a Quillory export, but: CSV has no messages."}));
}

}  // namespace
}  // namespace kinfolio::Scanner
