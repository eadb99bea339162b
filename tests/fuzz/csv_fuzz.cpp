// A chat spreadsheet: the rows, the header tests and the reader in each date
// order.
#include "fuzz/fuzz_support.h"
#include "importers/csv.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Fuzz::allowRefusal([&] { Importer::csvRows(text); });
    if (auto header = Importer::csvHeader(text)) Importer::hasChatColumns(*header);
    Importer::datesReadEitherWay(text);
    for (DateOrder order : Fuzz::kOrders)
        Fuzz::allowRefusal([&] { Importer::csv(text, "fuzz", order); });
    return 0;
}
