#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/settings.h"

namespace kinfolio {

// What is remembered between runs: the settings and the materials folder.
struct StoredState {
    std::optional<Settings> settings;  // none when absent or not decodable
    std::optional<std::string> folder;
    // What was put right while loading, for the user to read.
    std::vector<std::string> warnings;
};

// One JSON file per user: {"settings": {...}, "materialsFolderBookmark": path}.
class SettingsStore {
public:
    // $XDG_CONFIG_HOME/kinfolio/settings.json
    static std::string defaultPath();

    explicit SettingsStore(std::string path = defaultPath()) : path_(std::move(path)) {}

    // Never fails: an unreadable or damaged file reads as nothing stored.
    StoredState load() const;
    // Written atomically. Throws EvidenceError when the file cannot be written.
    void save(const Settings& settings, const std::optional<std::string>& folder) const;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace kinfolio
