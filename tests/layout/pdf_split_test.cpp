#include <gtest/gtest.h>
#include <poppler.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>

#include <set>

#include "layout/pdf_exporter.h"
#include "model/evidence.h"
#include "support/pdf_reader.h"
#include "support/sample_export.h"

namespace kinfolio {

namespace PDFExporter {
// The plain greedy packing that split() must match, defined beside it.
std::vector<std::string> splitOnePageAtATime(const std::string& data, int64_t maxBytes);
}  // namespace PDFExporter

namespace {

std::vector<Sample::Page> evenPages(size_t n, int side) {
    return std::vector<Sample::Page>(n, Sample::Page{side, side});
}

using Sample::makeExport;
using Sample::pageLabel;

struct ReadBack {
    explicit ReadBack(const std::string& data) {
        GBytes* bytes = g_bytes_new(data.data(), data.size());
        document = poppler_document_new_from_bytes(bytes, nullptr, nullptr);
        g_bytes_unref(bytes);
    }
    ~ReadBack() {
        if (document) g_object_unref(document);
    }
    int pageCount() const { return poppler_document_get_n_pages(document); }
    // The page's label as a viewer shows it in its page box.
    std::string label(int page) const {
        PopplerPage* p = poppler_document_get_page(document, page);
        char* label = poppler_page_get_label(p);
        std::string result = label ? label : "";
        g_free(label);
        g_object_unref(p);
        return result;
    }
    std::string text(int page) const {
        PopplerPage* p = poppler_document_get_page(document, page);
        char* text = poppler_page_get_text(p);
        std::string result = text ? text : "";
        g_free(text);
        g_object_unref(p);
        return result;
    }
    ReadBack(const ReadBack&) = delete;
    ReadBack& operator=(const ReadBack&) = delete;

    PopplerDocument* document = nullptr;
};

int pageCount(const std::string& part) {
    ReadBack document(part);
    EXPECT_NE(document.document, nullptr);
    return document.document ? document.pageCount() : 0;
}

// Page ranges [begin, end) of the parts in the whole document.
std::vector<std::pair<int, int>> ranges(const std::vector<std::string>& parts) {
    std::vector<std::pair<int, int>> result;
    int begin = 0;
    for (const auto& part : parts) {
        int count = pageCount(part);
        result.push_back({begin, begin + count});
        begin += count;
    }
    return result;
}

// Outline titles of a part with the whole document's page they lead to.
void readOutline(QPDF& qpdf, std::vector<QPDFOutlineObjectHelper> items, int firstPage,
                 std::set<std::pair<std::string, int>>& into) {
    const auto& pages = qpdf.getAllPages();
    for (auto& item : items) {
        QPDFObjectHandle page = item.getDestPage();
        int index = -1;
        for (size_t i = 0; i < pages.size(); ++i) {
            if (page.isIndirect() && pages[i].getObjGen() == page.getObjGen()) index = int(i);
        }
        EXPECT_GE(index, 0) << item.getTitle();
        into.insert({item.getTitle(), firstPage + index});
        readOutline(qpdf, item.getKids(), firstPage, into);
    }
}

std::set<std::pair<std::string, int>> expectedOutline(int begin, int end) {
    std::set<std::pair<std::string, int>> result;
    for (int i = begin; i < end; ++i) {
        result.insert({"Section " + std::to_string(i + 1), i});
        if (i % 3 == 0) result.insert({"Detail " + std::to_string(i + 1), i});
    }
    return result;
}

TEST(PDFSplitTest, DataWithinTheLimitComesBackUnopened) {
    std::string garbage(1000, 'x');
    auto parts = PDFExporter::split(garbage, 1000);
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0], garbage);
    EXPECT_EQ(PDFExporter::split(garbage, 5000), std::vector<std::string>{garbage});
}

TEST(PDFSplitTest, UnreadableDataOverTheLimitIsRefused) {
    std::string garbage(1001, 'x');
    try {
        PDFExporter::split(garbage, 1000);
        FAIL() << "garbage was split";
    } catch (const EvidenceError& error) {
        EXPECT_STREQ(error.what(), "Could not reopen the PDF to split it.");
    }
    std::string cut = makeExport(evenPages(3, 40)).substr(0, 50);
    EXPECT_THROW(PDFExporter::split(cut, 10), EvidenceError);
}

TEST(PDFSplitTest, ThreePartsKeepPageOrderLimitAndCreator) {
    const size_t n = 12;
    std::string whole = makeExport(evenPages(n, 100));
    int64_t limit = int64_t(whole.size() * 2 / 5);
    auto parts = PDFExporter::split(whole, limit);
    ASSERT_EQ(parts.size(), 3u);

    size_t page = 0;
    for (const auto& part : parts) {
        EXPECT_LE(int64_t(part.size()), limit);
        ReadBack document(part);
        ASSERT_NE(document.document, nullptr);
        for (int i = 0; i < document.pageCount(); ++i, ++page) {
            EXPECT_NE(document.text(i).find(pageLabel(page, n)), std::string::npos)
                << "part page " << i << " should be " << pageLabel(page, n);
            // A viewer's page box agrees with the printed "Page 5 of 12".
            EXPECT_EQ(document.label(i), std::to_string(page + 1));
        }

        QPDF qpdf;
        qpdf.processMemoryFile("part", part.data(), part.size());
        QPDFObjectHandle info = qpdf.getTrailer().getKey("/Info");
        ASSERT_TRUE(info.isDictionary());
        EXPECT_EQ(info.getKeys(), std::set<std::string>{"/Creator"});
        EXPECT_EQ(info.getKey("/Creator").getUTF8Value(), "Kinfolio");
        EXPECT_FALSE(qpdf.anyWarnings());
    }
    EXPECT_EQ(page, n);
    EXPECT_EQ(PDFExporter::split(whole, limit), parts) << "splitting is not deterministic";
}

TEST(PDFSplitTest, OversizedPageStandsAlone) {
    std::vector<Sample::Page> pages = evenPages(7, 40);
    pages[3].imageWidth = pages[3].imageHeight = 260;
    std::string whole = makeExport(pages);
    int64_t limit = 100'000;
    ASSERT_GT(int64_t(whole.size()), limit);
    auto parts = PDFExporter::split(whole, limit);
    auto pageRanges = ranges(parts);
    int oversized = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (int64_t(parts[i].size()) <= limit) continue;
        ++oversized;
        EXPECT_EQ(pageRanges[i], std::make_pair(3, 4));
    }
    EXPECT_EQ(oversized, 1);
    ASSERT_GE(parts.size(), 3u);
    EXPECT_EQ(pageRanges.back().second, 7);
}

TEST(PDFSplitTest, FastSearchMatchesThePlainGreedy) {
    std::vector<std::vector<Sample::Page>> documents;
    documents.push_back(evenPages(14, 60));
    std::vector<Sample::Page> mixed;
    for (int i = 0; i < 16; ++i)
        mixed.push_back({(i * 37) % 90, i % 4 == 1});
    documents.push_back(mixed);
    std::vector<Sample::Page> growing;
    for (int i = 0; i < 10; ++i)
        growing.push_back({10 + i * 12, false});
    documents.push_back(growing);

    for (size_t d = 0; d < documents.size(); ++d) {
        std::string whole = makeExport(documents[d], unsigned(d + 7));
        for (double fraction : {0.05, 0.13, 0.3, 0.55, 0.97}) {
            int64_t limit = int64_t(double(whole.size()) * fraction);
            auto fast = PDFExporter::split(whole, limit);
            auto plain = PDFExporter::splitOnePageAtATime(whole, limit);
            EXPECT_EQ(fast, plain) << "document " << d << ", limit " << limit;
            EXPECT_GT(fast.size(), 1u);
        }
    }
}

TEST(PDFSplitTest, EachPartKeepsItsOutlineAndLinks) {
    const size_t n = 10;
    std::string whole = makeExport(evenPages(n, 70));
    auto parts = PDFExporter::split(whole, int64_t(whole.size() / 3));
    ASSERT_GE(parts.size(), 3u);
    auto pageRanges = ranges(parts);
    for (size_t p = 0; p < parts.size(); ++p) {
        const auto& part = parts[p];
        auto [begin, end] = pageRanges[p];
        EXPECT_TRUE(testing::qpdfCheckPasses(part)) << "part " << p + 1;

        QPDF qpdf;
        qpdf.processMemoryFile("part", part.data(), part.size());
        QPDFOutlineDocumentHelper outlines(qpdf);
        std::set<std::pair<std::string, int>> found;
        readOutline(qpdf, outlines.getTopLevelOutlines(), begin, found);
        EXPECT_EQ(found, expectedOutline(begin, end)) << "part " << p + 1;

        // The contents rows (first page) and the last page link to every page:
        // within a part they must lead to the right page, across parts they go.
        ReadBack document(part);
        ASSERT_NE(document.document, nullptr);
        for (int i = 0; i < document.pageCount(); ++i) {
            int global = begin + i;
            bool hasRows = global == 0 || global == int(n) - 1;
            PopplerPage* page = poppler_document_get_page(document.document, i);
            GList* mapping = poppler_page_get_link_mapping(page);
            std::set<int> targets;
            for (GList* at = mapping; at; at = at->next) {
                auto* link = static_cast<PopplerLinkMapping*>(at->data);
                ASSERT_EQ(link->action->type, POPPLER_ACTION_GOTO_DEST);
                PopplerDest* dest = link->action->goto_dest.dest;
                ASSERT_EQ(dest->type, POPPLER_DEST_NAMED);
                PopplerDest* named =
                    poppler_document_find_dest(document.document, dest->named_dest);
                ASSERT_NE(named, nullptr) << dest->named_dest;
                targets.insert(begin + named->page_num - 1);
                EXPECT_EQ(std::string(dest->named_dest),
                          "page-" + std::to_string(begin + named->page_num - 1));
                poppler_dest_free(named);
            }
            poppler_page_free_link_mapping(mapping);
            g_object_unref(page);
            std::set<int> expected;
            for (int j = begin; hasRows && j < end; ++j)
                expected.insert(j);
            EXPECT_EQ(targets, expected) << "page " << global + 1;
        }
    }
}

}  // namespace
}  // namespace kinfolio
