// A LINE text export: the recogniser, the day-header reader and the reader.
#include "fuzz/fuzz_support.h"
#include "importers/line.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Importer::looksLikeLine(text);
    Importer::lineDay(text.substr(0, text.find('\n')));
    Fuzz::allowRefusal([&] { Importer::line(text, "fuzz"); });
    return 0;
}
