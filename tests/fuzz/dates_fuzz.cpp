// Written timestamps: the shared date lists in each order, the WhatsApp
// forms of other languages, and the detection of a chat's date order.
#include "fuzz/fuzz_support.h"
#include "importers/dates.h"
#include "importers/whatsapp_forms.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    for (DateOrder order : Fuzz::kOrders) {
        Importer::date(text, order);
        Importer::formTimestamp(text, order);
        Importer::formLine(text, order);
    }
    Importer::isFormLine(text);
    Importer::detectOrder(text);
    return 0;
}
