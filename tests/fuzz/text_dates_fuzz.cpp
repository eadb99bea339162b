// Dates in running text. Besides not crashing, every date found must lie
// inside the text it was found in.
#include <cstdlib>

#include "fuzz/fuzz_support.h"
#include "importers/text_dates.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    for (DateOrder order : Fuzz::kOrders) {
        for (const auto& found : Importer::findDates(text, order))
            if (found.begin > size || found.length > size - found.begin) std::abort();
    }
    Importer::monthNumber(text);
    return 0;
}
