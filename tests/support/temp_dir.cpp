#include "support/temp_dir.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "scan/scanner.h"

namespace kinfolio::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
    std::string tmpl = (fs::temp_directory_path() / "kinfolio-test-XXXXXX").string();
    if (!::mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed");
    path_ = tmpl;
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(path_, ec);
}

std::string TempDir::write(const std::string& relative, std::string_view bytes) const {
    fs::path p = fs::path(path_) / relative;
    fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return p.string();
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
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
        if (e.is_regular_file() && !e.is_symlink())
            out += " " + Scanner::sha256Hex(readFile(e.path().string()));
        out += "\n";
    }
    return out;
}

}  // namespace kinfolio::testing
