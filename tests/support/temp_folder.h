#pragma once

#include <string>
#include <string_view>

namespace kinfolio::testing {

// A fresh folder under the system's temporary directory, removed with
// everything in it when the object goes.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    // Writes `bytes` at the relative path, creating the folders on the way;
    // returns the absolute path.
    std::string write(const std::string& relative, std::string_view bytes) const;

private:
    std::string path_;
};

}  // namespace kinfolio::testing
