#include "media/module.h"

#include <dlfcn.h>
#include <unistd.h>

#include "model/evidence.h"

namespace kinfolio::Scanner::detail {

namespace {

constexpr const char* kModuleName = "kinfolio-media.so";

// The folder of the running program.
std::string programFolder() {
    std::string path(4096, '\0');
    ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0 || static_cast<size_t>(length) >= path.size()) return ".";
    path.resize(static_cast<size_t>(length));
    return path.substr(0, path.rfind('/'));
}

// Beside the program in a build folder; in the library folder of an
// installation, found from the program's own place so that a package
// unpacked anywhere works.
void* openModule() {
    const std::string folder = programFolder();
    for (const std::string& place :
         {folder + "/" + kModuleName,
          folder + "/" + KINFOLIO_MODULE_FROM_PROGRAM + "/" + kModuleName}) {
        // Every symbol bound now: a module that does not fit this program
        // fails here, not halfway through a file.
        if (void* module = ::dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return nullptr;
}

}  // namespace

const void* moduleTable(const char* entry, size_t size) {
    static void* module = openModule();
    using Entry = const void* (*)();
    auto find = module ? reinterpret_cast<Entry>(::dlsym(module, entry)) : nullptr;
    const void* table = find ? find() : nullptr;
    // Each table begins with its own size: a module from another build of
    // Kinfolio is refused rather than called with the wrong arguments.
    if (!table || *static_cast<const size_t*>(table) != size)
        throw EvidenceError(
            "Kinfolio could not read this file because a part of Kinfolio itself is missing or "
            "damaged. Installing Kinfolio again puts it back.");
    return table;
}

}  // namespace kinfolio::Scanner::detail
