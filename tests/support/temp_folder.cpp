#include "support/temp_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kinfolio::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string tmpl = (fs::temp_directory_path() / "kinfolio-test-XXXXXX").string();
    if (!::mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp");
    path_ = fs::canonical(tmpl).string();
}

TempFolder::~TempFolder() {
    std::error_code ec;
    // Tests make folders read-only to prove nothing writes there; undo that.
    for (auto it = fs::recursive_directory_iterator(path_, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
        if (it->is_directory(ec) && !it->is_symlink(ec))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
}

std::string TempFolder::write(const std::string& relative, std::string_view bytes) const {
    fs::path p = fs::path(path_) / relative;
    fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("write " + p.string());
    return p.string();
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

ScopedCacheHome::ScopedCacheHome() {
    if (const char* old = std::getenv("XDG_CACHE_HOME")) {
        previous_ = old;
        hadPrevious_ = true;
    }
    ::setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1);
}

ScopedCacheHome::~ScopedCacheHome() {
    if (hadPrevious_)
        ::setenv("XDG_CACHE_HOME", previous_.c_str(), 1);
    else
        ::unsetenv("XDG_CACHE_HOME");
}

}  // namespace kinfolio::test
