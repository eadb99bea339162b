#pragma once

#include <string>

namespace kinfolio::test {

// A fresh folder under the system's temporary directory, removed with
// everything in it when the object goes away.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    // Writes `bytes` to the relative path, making its folders; returns the
    // absolute path.
    std::string write(const std::string& relative, const std::string& bytes) const;

private:
    std::string path_;
};

}  // namespace kinfolio::test
