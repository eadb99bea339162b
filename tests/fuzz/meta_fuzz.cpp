// A Messenger or Instagram message_N.json: the recogniser, the repair of its
// doubly encoded text, and the reader in a zone with daylight saving.
#include <unicode/timezone.h>

#include <memory>

#include "fuzz/fuzz_support.h"
#include "importers/meta.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::unique_ptr<icu::TimeZone> zone(
        icu::TimeZone::createTimeZone("Europe/Berlin"));
    std::string_view text = Fuzz::asText(data, size);
    Importer::isMeta(text);
    Importer::fixMeta(text);
    Fuzz::allowRefusal([&] { Importer::meta(text, "fuzz", *zone); });
    return 0;
}
