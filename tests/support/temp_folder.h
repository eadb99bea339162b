#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kinfolio::testing {

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

// A snapshot of a folder and everything below it (path, type and mode,
// owner, size, modification and change times to the nanosecond, a file's
// content hash, a link's target), to prove a folder was left untouched:
// nothing added, removed, written, touched or made readable to others.
std::string folderFingerprint(const std::string& folder);

// Sets an environment variable for the life of the object, then puts back
// what was there before.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::string& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string name_;
    std::optional<std::string> previous_;
};

// Points $XDG_CACHE_HOME at a temporary folder for the life of the object,
// so tests never touch the user's real cache.
class ScopedCacheHome {
public:
    ScopedCacheHome() : cache_("XDG_CACHE_HOME", folder_.path()) {}
    const std::string& path() const { return folder_.path(); }

private:
    TempFolder folder_;
    ScopedEnvironment cache_;
};

// The same for the settings and the cache together, as a command run by a
// test sees them.
class ScopedHome : public ScopedCacheHome {
    ScopedEnvironment config_{"XDG_CONFIG_HOME", path()};
};

}  // namespace kinfolio::testing
