#include "app/export_job.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "model/text.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

TEST(ExportJobTest, PartsAreWrittenAtTheTargetOrNamedAfterIt) {
    using Strings = std::vector<std::string>;
    struct Case {
        const char* name;
        Strings parts;
        int maxFileMB;
        Strings files, notes;
    };
    const std::string limit(1'000'000, 'x'), over(1'000'001, 'x');
    const Case cases[] = {
        {"one part is the target itself", Strings{"%PDF-one"}, 0, Strings{"Evidence.pdf"}, {}},
        {"a part just over the limit", Strings{"a", over, "c"}, 1,
         Strings{"Evidence - Part 1 of 3.pdf", "Evidence - Part 2 of 3.pdf",
                 "Evidence - Part 3 of 3.pdf"},
         Strings{ExportJob::splitMessage(3, 1), ExportJob::oversizeMessage(1)}},
        {"a part of exactly the limit", Strings{"a", limit}, 1,
         Strings{"Evidence - Part 1 of 2.pdf", "Evidence - Part 2 of 2.pdf"},
         Strings{ExportJob::splitMessage(2, 1)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::TempFolder dir;
        Settings settings;
        settings.maxFileMB = c.maxFileMB;
        auto written = ExportJob::writeParts(c.parts, settings, dir.path() + "/Evidence.pdf");
        std::vector<std::string> files;
        for (size_t i = 0; i < c.files.size(); ++i) {
            files.push_back(dir.path() + "/" + c.files[i]);
            EXPECT_EQ(testing::readFile(files.back()), c.parts[i]);
        }
        EXPECT_EQ(written.files, files);
        EXPECT_EQ(written.notes, c.notes);
        // Only the parts: no temporary file is left behind.
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                                std::filesystem::directory_iterator()),
                  static_cast<long>(files.size()));
    }
}

// A chat in Chinese: its font subset is most of the file. Each part is drawn
// with only the glyphs of its own pages, so every part stays under the limit,
// and the printed and the viewer's page numbers run on from part to part.
TEST(ExportJobTest, AChineseChatSplitsIntoPartsUnderTheLimitNumberedOn) {
    testing::ScopedHome home;
    testing::TempFolder materials, output;
    std::string chat;
    char32_t next = 0x4E00;
    for (int m = 0; m < 420; ++m) {
        icu::UnicodeString text;
        for (int k = 0; k < 16; ++k)
            text.append(static_cast<UChar32>(next++));
        char line[64];
        std::snprintf(line, sizeof line, "%02d/01/2025, %02d:%02d - ", 1 + m % 28, 8 + m / 28 % 12,
                      m % 60);
        chat += line + std::string(m % 2 ? "\u738B\u82B3" : "Sam") + ": " + toUtf8(text) + "\n";
    }
    materials.write("WhatsApp Chat with Wang Fang.txt", chat);
    ScanResult scan = Scanner::scan(materials.path(), DateOrder::dayFirst, "UTC");
    Settings settings = Settings::defaults();
    settings.messagesPerMonth = 0;
    settings.maxFileMB = 1;

    auto result =
        ExportJob::run(AppServices::standard(), scan, settings, output.path() + "/Evidence.pdf");
    ASSERT_GE(result.written.files.size(), 2u);
    int page = 0;
    for (const auto& file : result.written.files) {
        std::string part = testing::readFile(file);
        EXPECT_LT(part.size(), 1'000'000u) << file;
        EXPECT_TRUE(testing::qpdfCheckPasses(part)) << file;
        auto read = testing::readPDF(part);
        for (size_t i = 0; i < read.pages.size(); ++i) {
            ++page;
            std::string printed =
                "Page " + std::to_string(page) + " of " + std::to_string(result.pageCount);
            EXPECT_NE(read.flat(i).find(printed), std::string::npos) << file << " " << printed;
            EXPECT_EQ(read.labels[i], std::to_string(page)) << file;
        }
    }
    EXPECT_EQ(page, result.pageCount);
}

}  // namespace
}  // namespace kinfolio
