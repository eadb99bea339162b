// The whole scan of a folder that holds one file: the first byte chooses the
// file's extension, the rest are its bytes. This reaches every reader the
// routing table has, the image, video and PDF readers included, with the
// same checks a user's folder goes through.
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "scan/scanner.h"

using namespace kinfolio;
namespace fs = std::filesystem;

namespace {

constexpr std::array<const char*, 13> kExtensions = {
    "jpg", "png", "heic", "mp4", "mov", "pdf", "zip", "txt", "json", "csv", "eml", "mbox", "html"};

// A private folder for the materials and one for the caches, removed when
// the fuzzer ends, so nothing is left in the user's own cache.
struct Workspace {
    fs::path base, materials, cache;
    Workspace() {
        std::string pattern = (fs::temp_directory_path() / "kinfolio-fuzz-XXXXXX").string();
        base = ::mkdtemp(pattern.data());
        materials = base / "materials";
        cache = base / "cache";
        fs::create_directory(materials);
        fs::create_directory(cache);
        ::setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    }
    ~Workspace() {
        std::error_code ec;
        fs::remove_all(base, ec);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Workspace space;
    if (size == 0) return 0;
    fs::path file =
        space.materials / (std::string("input.") + kExtensions[data[0] % kExtensions.size()]);
    {
        std::ofstream out(file, std::ios::binary);
        out.write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
    }
    Scanner::scan(space.materials.string(), DateOrder::automatic, "UTC");
    std::error_code ec;
    fs::remove(file, ec);
    for (const auto& made : fs::directory_iterator(space.cache, ec))
        fs::remove_all(made.path(), ec);
    return 0;
}
