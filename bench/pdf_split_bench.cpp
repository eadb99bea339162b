// Splitting a large photo-heavy export into 10 MB parts, against the qpdf
// command line cutting the same file into single pages.
#define POINTERHOLDER_TRANSITION 4

#include <benchmark/benchmark.h>
#include <cairo-pdf.h>
#include <cairo.h>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "layout/pdf_exporter.h"

namespace {

namespace fs = std::filesystem;

constexpr int kPages = 300;
constexpr int64_t kLimit = 10'000'000;

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// An A4 export of 300 pages, each with its own photo-sized image (about 170
// KB of pixels that do not compress, as a photo's JPEG does not), a page
// label, an outline entry, and a contents page linking to every page.
std::string generateExport() {
    std::string raw;
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendBytes, &raw, 595, 842);
    cairo_t* cr = cairo_create(surface);
    std::mt19937 random(2025);
    for (int i = 0; i < kPages; ++i) {
        std::string dest = "name='page-" + std::to_string(i) + "'";
        cairo_tag_begin(cr, CAIRO_TAG_DEST, dest.c_str());
        cairo_move_to(cr, 40, 820);
        std::string label = "Page " + std::to_string(i + 1) + " of " + std::to_string(kPages);
        cairo_show_text(cr, label.c_str());
        cairo_tag_end(cr, CAIRO_TAG_DEST);
        if (i == 0) {
            for (int j = 1; j < kPages; ++j) {
                std::string link = "dest='page-" + std::to_string(j) + "'";
                cairo_tag_begin(cr, CAIRO_TAG_LINK, link.c_str());
                cairo_move_to(cr, 40 + 100 * (j % 5), 40 + 13 * (j / 5));
                cairo_show_text(cr, ("Section " + std::to_string(j + 1)).c_str());
                cairo_tag_end(cr, CAIRO_TAG_LINK);
            }
        }
        int width = 280 + (i % 7) * 4, height = 200;
        cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
        cairo_surface_flush(image);
        unsigned char* pixels = cairo_image_surface_get_data(image);
        int stride = cairo_image_surface_get_stride(image);
        for (int y = 0; y < height; ++y) {
            auto* row = reinterpret_cast<uint32_t*>(pixels + y * stride);
            for (int x = 0; x < width; ++x)
                row[x] = random() & 0xffffff;
        }
        cairo_surface_mark_dirty(image);
        cairo_save(cr);
        cairo_translate(cr, 40, 100);
        cairo_scale(cr, 500.0 / width, 500.0 / width);
        cairo_set_source_surface(cr, image, 0, 0);
        cairo_paint(cr);
        cairo_restore(cr);
        cairo_surface_destroy(image);
        std::string title = "Section " + std::to_string(i + 1);
        std::string target = "dest='page-" + std::to_string(i) + "'";
        cairo_pdf_surface_add_outline(surface, CAIRO_PDF_OUTLINE_ROOT, title.c_str(),
                                      target.c_str(), cairo_pdf_outline_flags_t(0));
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);

    // The exporter's final rewrite, which also repairs cairo's cross-reference table.
    QPDF qpdf;
    qpdf.setSuppressWarnings(true);
    qpdf.processMemoryFile("export", raw.data(), raw.size());
    QPDFWriter writer(qpdf);
    writer.setOutputMemory();
    writer.setDeterministicID(true);
    writer.write();
    auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

const std::string& exportData() {
    static const std::string data = generateExport();
    return data;
}

// The same document on disk, for the qpdf command line.
const fs::path& exportFile() {
    static const fs::path file = [] {
        fs::path folder = fs::temp_directory_path() / "kinfolio-split-bench";
        fs::create_directories(folder);
        fs::path path = folder / "export.pdf";
        std::ofstream(path, std::ios::binary) << exportData();
        return path;
    }();
    return file;
}

void BM_Split(benchmark::State& state) {
    const std::string& data = exportData();
    size_t parts = 0;
    for (auto _ : state) {
        auto result = kinfolio::PDFExporter::split(data, kLimit);
        parts = result.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["MB"] = double(data.size()) / 1e6;
    state.counters["parts"] = double(parts);
}
BENCHMARK(BM_Split)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_QpdfSplitPages(benchmark::State& state) {
    const fs::path& input = exportFile();
    fs::path output = input.parent_path() / "pages";
    fs::create_directories(output);
    std::string command =
        "qpdf --split-pages '" + input.string() + "' '" + (output / "page-%d.pdf").string() + "'";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("qpdf --split-pages failed (is the qpdf package installed?)");
            break;
        }
    }
    fs::remove_all(output);
}
BENCHMARK(BM_QpdfSplitPages)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

}  // namespace

BENCHMARK_MAIN();
