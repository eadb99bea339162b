#pragma once

#include <string>
#include <string_view>

namespace kinfolio::test {

// A fresh folder under the system's temporary folder, removed with its
// contents when the test ends.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    // Writes a file below the folder (creating its folders); returns its path.
    std::string write(const std::string& relative, std::string_view bytes) const;

private:
    std::string path_;
};

std::string readFile(const std::string& path);

// Points $XDG_CACHE_HOME at a temporary folder for the life of the object,
// so tests never touch the user's real cache.
class ScopedCacheHome {
public:
    ScopedCacheHome();
    ~ScopedCacheHome();
    const std::string& path() const { return folder_.path(); }

private:
    TempFolder folder_;
    std::string previous_;
    bool hadPrevious_ = false;
};

}  // namespace kinfolio::test
