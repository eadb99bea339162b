#include "app/export_job.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_folder.h"

namespace kinfolio {
namespace {

Settings named(const std::string& title, const std::string& applicant) {
    Settings settings;
    settings.title = title;
    settings.applicant = applicant;
    return settings;
}

TEST(ExportJobTest, BaseNameJoinsTheNamesAndReplacesSlashes) {
    EXPECT_EQ(ExportJob::baseName(named("Visa/2025", "")), "Visa-2025");
    EXPECT_EQ(ExportJob::baseName(named("Evidence", "Sam Lee")), "Evidence - Sam Lee");
    EXPECT_EQ(ExportJob::baseName(named("", "Sam/Lee")), "Sam-Lee");
    EXPECT_EQ(ExportJob::baseName(named("", "")), "Relationship evidence");
    EXPECT_EQ(ExportJob::baseName(named("a//b", "c/")), "a--b - c-");
}

TEST(ExportJobTest, PartNamesCountFromOne) {
    EXPECT_EQ(ExportJob::partName("Evidence", 1, 3), "Evidence - Part 1 of 3.pdf");
    EXPECT_EQ(ExportJob::partName("Evidence", 2, 3), "Evidence - Part 2 of 3.pdf");
    EXPECT_EQ(ExportJob::partName("Evidence", 3, 3), "Evidence - Part 3 of 3.pdf");
    EXPECT_EQ(ExportJob::partName("Visa-2025", 10, 12), "Visa-2025 - Part 10 of 12.pdf");
}

TEST(ExportJobTest, ByteLimitIsDecimalMegabytes) {
    Settings settings;
    settings.maxFileMB = 10;
    EXPECT_EQ(ExportJob::byteLimit(settings), 10'000'000);
    settings.maxFileMB = 0;
    EXPECT_EQ(ExportJob::byteLimit(settings), 0);
    settings.maxFileMB = -5;
    EXPECT_EQ(ExportJob::byteLimit(settings), 0);
    settings.maxFileMB = 2'147'483'647;
    EXPECT_EQ(ExportJob::byteLimit(settings), int64_t{2'147'483'647} * 1'000'000);
}

TEST(ExportJobTest, MessagesNameTheCountAndTheLimit) {
    EXPECT_EQ(ExportJob::splitMessage(3, 10),
              "The PDF is split into 3 files of at most 10 MB each. Page numbers continue from "
              "one file to the next.");
    EXPECT_EQ(ExportJob::oversizeMessage(25),
              "One page is larger than 25 MB on its own, so its file is over the limit. Use "
              "fewer or smaller photos on that page.");
}

TEST(ExportJobTest, OnePartIsWrittenAtTheTargetItself) {
    testing::TempFolder dir;
    Settings settings;
    auto written = ExportJob::writeParts({"%PDF-one"}, settings, dir.path() + "/Evidence.pdf");
    EXPECT_EQ(written.files, std::vector<std::string>{dir.path() + "/Evidence.pdf"});
    EXPECT_TRUE(written.notes.empty());
    EXPECT_EQ(testing::readFile(dir.path() + "/Evidence.pdf"), "%PDF-one");
}

TEST(ExportJobTest, PartsAreNamedAfterTheTargetAndAnOversizedOneIsReported) {
    testing::TempFolder dir;
    Settings settings;
    settings.maxFileMB = 1;
    std::string big(1'000'001, 'x');
    auto written = ExportJob::writeParts({"a", big, "c"}, settings, dir.path() + "/Evidence.pdf");
    EXPECT_EQ(written.files,
              (std::vector<std::string>{dir.path() + "/Evidence - Part 1 of 3.pdf",
                                        dir.path() + "/Evidence - Part 2 of 3.pdf",
                                        dir.path() + "/Evidence - Part 3 of 3.pdf"}));
    EXPECT_EQ(written.notes, (std::vector<std::string>{ExportJob::splitMessage(3, 1),
                                                       ExportJob::oversizeMessage(1)}));
    EXPECT_FALSE(std::filesystem::exists(dir.path() + "/Evidence.pdf"));
    EXPECT_EQ(testing::readFile(dir.path() + "/Evidence - Part 3 of 3.pdf"), "c");
    // Only the three parts: no temporary file is left behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              3);
}

TEST(ExportJobTest, AFolderThatCannotBeWrittenIsAClearError) {
    Settings settings;
    EXPECT_THROW(ExportJob::writeParts({"x"}, settings, "/nonexistent/folder/Evidence.pdf"),
                 EvidenceError);
}

}  // namespace
}  // namespace kinfolio
