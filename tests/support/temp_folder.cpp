#include "support/temp_folder.h"

#include <sys/stat.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "scan/scanner.h"

namespace kinfolio::testing {

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

std::string folderFingerprint(const std::string& folder) {
    std::string out;
    for (const auto& e : fs::recursive_directory_iterator(folder)) {
        struct stat st {};
        ::lstat(e.path().c_str(), &st);
        out += e.path().string() + " " + std::to_string(st.st_mode) + " " +
               std::to_string(st.st_size) + " " + std::to_string(st.st_mtim.tv_sec) + "." +
               std::to_string(st.st_mtim.tv_nsec);
        if (fs::is_regular_file(e.symlink_status()))
            out += " " + Scanner::sha256Hex(readFile(e.path().string()));
        out += "\n";
    }
    return out;
}

ScopedEnvironment::ScopedEnvironment(std::string name, const std::string& value)
    : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) {
        previous_ = old;
        hadPrevious_ = true;
    }
    ::setenv(name_.c_str(), value.c_str(), 1);
}

ScopedEnvironment::~ScopedEnvironment() {
    if (hadPrevious_)
        ::setenv(name_.c_str(), previous_.c_str(), 1);
    else
        ::unsetenv(name_.c_str());
}

}  // namespace kinfolio::testing
