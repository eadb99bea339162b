#pragma once

#include <string>
#include <string_view>

namespace kinfolio::testing {

// A fresh folder under the system's temporary folder, removed with everything
// in it when the value goes away.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    // Writes a file below the folder (creating its parent folders) and returns
    // its absolute path.
    std::string write(const std::string& relative, std::string_view bytes) const;

private:
    std::string path_;
};

std::string readFile(const std::string& path);

// A snapshot of every file below a folder (relative path, size, modification
// time and content hash), to prove that a folder was left untouched.
std::string folderFingerprint(const std::string& folder);

}  // namespace kinfolio::testing
