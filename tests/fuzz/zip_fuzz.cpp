// A ZIP archive from bytes: its directory, then the contents of its members,
// at most a bounded number of them, so one input stays one quick run.
#include <string>

#include "fuzz/fuzz_support.h"
#include "media/zip_archive.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMembers = 64;
    Fuzz::allowRefusal([&] {
        ZipArchive zip = ZipArchive::fromBytes(std::string(Fuzz::asText(data, size)));
        size_t read = 0;
        for (const auto& entry : zip.entries()) {
            if (read++ == kMembers) break;
            Fuzz::allowRefusal([&] { zip.contents(entry); });
        }
    });
    return 0;
}
