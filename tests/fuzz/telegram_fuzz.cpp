// Telegram Desktop's result.json: the recogniser and the reader.
#include "fuzz/fuzz_support.h"
#include "importers/telegram.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Importer::isTelegram(text);
    Fuzz::allowRefusal([&] { Importer::telegram(text, "fuzz"); });
    return 0;
}
