#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "model/settings.h"
#include "model/source.h"

namespace kinfolio {

// Everything one export needs: the chosen items in layout order, the
// settings, every source file by id, and the number of conversations.
struct ExportInput {
    std::vector<Evidence> items;
    Settings settings;
    std::map<std::string, FileRecord> files;
    int conversationCount = 0;
};

struct Output {
    std::string data;  // the complete PDF
    int pageCount = 0;
};

namespace PDFExporter {

// Called after each page is drawn with the pages drawn so far and the total,
// so that a long export can show how far it has got.
using Progress = std::function<void(size_t done, size_t total)>;

// The finished PDF. Throws EvidenceError ("Nothing is selected.", "The source
// file for an item is missing. Scan the folder again.", "Could not create the PDF.").
Output make(const ExportInput& input, const Progress& progress = {});

// Parts of at most maxBytes each (a lone page may be larger), in page order,
// made by copying the pages of `data`: every part carries the whole
// document's fonts. When the data is split, `ends` receives the page index
// after each part. Throws EvidenceError ("Could not reopen the PDF to split it.").
std::vector<std::string> split(const std::string& data, int64_t maxBytes,
                               std::vector<size_t>* ends = nullptr);

// The same parts drawn afresh, each a document of its own with only the
// glyphs its pages use, joined while they stay under maxBytes: a chat in
// Chinese or Japanese, whose font is most of the file, is no longer cut
// into parts that each carry the whole font. `data` is make(input)'s PDF.
std::vector<std::string> splitDrawn(const ExportInput& input, const std::string& data,
                                    int64_t maxBytes);

}  // namespace PDFExporter
}  // namespace kinfolio
