// Saved e-mails: the input as a mailbox split into messages, and as one
// message, each read through its headers and MIME parts.
#include "fuzz/fuzz_support.h"
#include "importers/email.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Importer::looksLikeEmail(text);
    Fuzz::allowRefusal([&] {
        int64_t position = 0;
        Importer::eachEmail(
            text, [&](std::string_view message) { Importer::email(message, "fuzz", ++position); });
    });
    Fuzz::allowRefusal([&] { Importer::email(text, "fuzz", 1); });
    Importer::decodeHeader(text);
    Importer::emailDate(text);
    return 0;
}
