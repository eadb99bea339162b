// A WhatsApp chat text: the recogniser and the reader in each date order.
#include "fuzz/fuzz_support.h"
#include "importers/whatsapp.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Importer::looksLikeWhatsApp(text);
    for (DateOrder order : Fuzz::kOrders)
        Fuzz::allowRefusal([&] { Importer::whatsapp(text, "fuzz", order); });
    return 0;
}
