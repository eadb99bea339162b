#include <gtest/gtest.h>

#include <set>

#include "layout/pdf_exporter.h"
#include "support/evidence_error.h"
#include "support/pdf_reader.h"
#include "support/sample_export.h"

namespace kinfolio {

namespace PDFExporter {
// The plain greedy packing that split() must match, defined beside it.
std::vector<std::string> splitOnePageAtATime(const std::string& data, int64_t maxBytes);
}  // namespace PDFExporter

namespace {

using Sample::makeExport;
using testing::readPDF;

std::vector<Sample::Page> evenPages(size_t n, int side) {
    return std::vector<Sample::Page>(n, Sample::Page{side, side});
}

TEST(PDFSplitTest, DataWithinTheLimitComesBackUnopenedAndUnreadableDataIsRefused) {
    std::string garbage(1000, 'x');
    EXPECT_EQ(PDFExporter::split(garbage, 1000), std::vector<std::string>{garbage});
    EXPECT_EQ(PDFExporter::split(garbage, 5000), std::vector<std::string>{garbage});
    EXPECT_EQ(testing::errorOf([&] { PDFExporter::split(garbage + "x", 1000); }),
              "Could not reopen the PDF to split it.");
    std::string cut = makeExport(evenPages(3, 40)).substr(0, 50);
    EXPECT_EQ(testing::errorOf([&] { PDFExporter::split(cut, 10); }),
              "Could not reopen the PDF to split it.");
}

// Each part keeps the whole document's page order, printed and viewer page
// numbers, creator, outline entries and links: within a part a link leads to
// the right page, across parts it goes.
TEST(PDFSplitTest, PartsKeepPagesLimitCreatorOutlineAndLinks) {
    const int n = 12;
    std::string whole = makeExport(evenPages(n, 100));
    int64_t limit = int64_t(whole.size() * 2 / 5);
    std::vector<size_t> ends;  // after each part, the page count of all parts so far
    std::vector<std::string> parts = PDFExporter::split(whole, limit, &ends);
    ASSERT_EQ(parts.size(), 3u);
    int begin = 0;  // the part's first page in the whole document
    for (size_t p = 0; p < parts.size(); ++p) {
        SCOPED_TRACE("part " + std::to_string(p + 1));
        const std::string& part = parts[p];
        testing::ReadPDF read = readPDF(part);
        int end = begin + int(read.pages.size());
        EXPECT_EQ(ends.at(p), static_cast<size_t>(end));
        EXPECT_LE(int64_t(part.size()), limit);
        EXPECT_TRUE(testing::qpdfCheckPasses(part));
        EXPECT_EQ(testing::information(part),
                  (std::map<std::string, std::string>{{"/Creator", "Kinfolio"}}));
        std::set<std::pair<std::string, int>> outline, expectedOutline;
        for (auto [title, page] : testing::outline(part))
            outline.insert({title, begin + page});
        for (int i = begin; i < end; ++i) {
            const int local = i - begin;
            EXPECT_NE(read.pages[local].find(Sample::pageLabel(i, n)), std::string::npos);
            EXPECT_EQ(read.labels[local], std::to_string(i + 1));
            expectedOutline.insert({"Section " + std::to_string(i + 1), i});
            if (i % 3 == 0) expectedOutline.insert({"Detail " + std::to_string(i + 1), i});
            // The contents rows (first page) and the last page link to every page.
            std::set<int> targets, expected;
            for (const auto& link : testing::links(part, local)) {
                EXPECT_EQ(link.name, "page-" + std::to_string(begin + link.page));
                targets.insert(begin + link.page);
            }
            for (int j = begin; (i == 0 || i == n - 1) && j < end; ++j)
                expected.insert(j);
            EXPECT_EQ(targets, expected) << "page " << i + 1;
        }
        EXPECT_EQ(outline, expectedOutline);
        begin = end;
    }
    EXPECT_EQ(begin, n);
    EXPECT_EQ(PDFExporter::split(whole, limit), parts) << "splitting is not deterministic";
}

TEST(PDFSplitTest, FastSearchMatchesThePlainGreedy) {
    std::vector<std::vector<Sample::Page>> documents = {evenPages(14, 60), {}, {}};
    for (int i = 0; i < 16; ++i)
        documents[1].push_back({(i * 37) % 90, i % 4 == 1});
    for (int i = 0; i < 10; ++i)
        documents[2].push_back({10 + i * 12, false});
    for (size_t d = 0; d < documents.size(); ++d) {
        std::string whole = makeExport(documents[d], unsigned(d + 7));
        for (double fraction : {0.05, 0.13, 0.3, 0.55, 0.97}) {
            int64_t limit = int64_t(double(whole.size()) * fraction);
            auto fast = PDFExporter::split(whole, limit);
            EXPECT_EQ(fast, PDFExporter::splitOnePageAtATime(whole, limit))
                << "document " << d << ", limit " << limit;
            EXPECT_GT(fast.size(), 1u);
        }
    }
}

}  // namespace
}  // namespace kinfolio
