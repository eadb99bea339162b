#include "media/module.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "model/evidence.h"

namespace kinfolio::Scanner::detail {

namespace {

constexpr const char* kModuleName = "kinfolio-media.so";

// The folder of the running program; none when the system does not say.
// Never the working folder: a module found there could be anyone's.
std::optional<std::string> programFolder() {
    std::string path(4096, '\0');
    ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0 || static_cast<size_t>(length) >= path.size()) return std::nullopt;
    path.resize(static_cast<size_t>(length));
    size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return std::nullopt;
    return path.substr(0, slash);
}

// Beside the program in a build folder; in the library folder of an
// installation, found from the program's own place so that a package
// unpacked anywhere works.
void* openModule() {
    const auto folder = programFolder();
    if (!folder) return nullptr;
    for (const std::string& place :
         {*folder + "/" + kModuleName,
          *folder + "/" + KINFOLIO_MODULE_FROM_PROGRAM + "/" + kModuleName}) {
        // Every symbol bound now: a module that does not fit this program
        // fails here, not halfway through a file.
        if (void* module = ::dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return nullptr;
}

}  // namespace

const void* moduleTable(const char* entry, size_t size) {
    static void* module = openModule();
    using Entry = const ModuleTable* (*)();
    auto find = module ? reinterpret_cast<Entry>(::dlsym(module, entry)) : nullptr;
    const ModuleTable* table = find ? find() : nullptr;
    // A module of another build (a program still running while Kinfolio is
    // updated loads the new one) is refused rather than called with
    // arguments it reads differently.
    if (!table || table->size != size || std::strcmp(table->build, KINFOLIO_MODULE_BUILD) != 0)
        throw EvidenceError(
            "Kinfolio could not read pictures, videos or PDF files because a part of Kinfolio "
            "itself is missing or damaged. Installing Kinfolio again puts it back.");
    return table;
}

}  // namespace kinfolio::Scanner::detail
