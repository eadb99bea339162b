#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "layout/pdf_exporter.h"
#include "support/chat_items.h"

// Reading a made PDF back the way a user meets it: through poppler, as text
// per page and as pixels.
namespace kinfolio::testing {

struct ReadPDF {
    std::vector<std::string> pages;  // text of each page
    std::vector<std::pair<double, double>> sizes;
    std::vector<std::string> labels;  // what a viewer shows in its page box
    // Whole text with line breaks as spaces, for sentences that wrap.
    std::string flat(size_t page) const;
    std::string allFlat() const;
};

ReadPDF readPDF(const std::string& bytes);

// Whether `qpdf --check` finds the file sound: stricter than viewers, which
// quietly repair a damaged cross-reference table.
bool qpdfCheckPasses(const std::string& bytes);

// The text printed on the same line as `label`, to its right (a contents
// row's page number); empty when the label is not on the page.
// The first occurrence after a "Contents" heading counts, else the last one.
std::string textRightOf(const std::string& bytes, int page, const std::string& label);

// One page rasterised at `scale` pixels per point; pixels as 0xRRGGBB.
struct Raster {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;
    uint32_t at(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }
};
Raster rasterise(const std::string& bytes, int page, double scale);

struct Box {
    int minX = 0, minY = 0, maxX = -1, maxY = -1;
    bool empty() const { return maxX < minX; }
};
// The bounding box of pixels of this colour (±2 per channel) inside the
// given pixel region, counting only horizontal runs of 12 pixels or more so
// that the soft edges of text do not count as fills.
Box boxOf(const Raster& raster, uint32_t colour, Box region);

// For each image drawn on the page: its pixel width divided by the drawn width in points.
std::vector<double> imageResolutions(const std::string& bytes, int page);

// Each link on the page: the named destination it leads to ("" for a direct
// one) and the 0-based page of this file that destination is on.
struct Link {
    std::string name;
    int page = -1;
};
std::vector<Link> links(const std::string& bytes, int page);

// Every outline entry, nested ones too, with the 0-based page it leads to.
std::vector<std::pair<std::string, int>> outline(const std::string& bytes);

// The document information dictionary: "/Creator" and the like, as text.
std::map<std::string, std::string> information(const std::string& bytes);

}  // namespace kinfolio::testing
