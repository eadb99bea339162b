#include "support/temp_folder.h"

#include <sys/stat.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

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
    // Each entry, the folder itself included, in name order: its type and
    // mode, owner, size, the nanoseconds of its modification and of its last
    // change (a file changed and its time put back still shows), and what it
    // holds: a file's SHA-256 or the target of a link.
    std::vector<fs::path> paths{folder};
    for (const auto& e : fs::recursive_directory_iterator(folder))
        paths.push_back(e.path());
    std::sort(paths.begin() + 1, paths.end());
    std::string out;
    for (const auto& p : paths) {
        struct stat st {};
        if (::lstat(p.c_str(), &st) != 0) throw std::runtime_error("lstat " + p.string());
        std::ostringstream line;
        line << p.string() << " " << std::oct << st.st_mode << std::dec << " " << st.st_uid << ":"
             << st.st_gid << " " << st.st_size << " " << st.st_mtim.tv_sec << "."
             << st.st_mtim.tv_nsec << " " << st.st_ctim.tv_sec << "." << st.st_ctim.tv_nsec;
        if (S_ISREG(st.st_mode)) line << " " << Scanner::sha256Hex(readFile(p.string()));
        if (S_ISLNK(st.st_mode)) line << " -> " << fs::read_symlink(p).string();
        out += line.str() + "\n";
    }
    return out;
}

ScopedEnvironment::ScopedEnvironment(std::string name, const std::string& value)
    : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) previous_ = old;
    ::setenv(name_.c_str(), value.c_str(), 1);
}

ScopedEnvironment::~ScopedEnvironment() {
    if (previous_)
        ::setenv(name_.c_str(), previous_->c_str(), 1);
    else
        ::unsetenv(name_.c_str());
}

}  // namespace kinfolio::testing
