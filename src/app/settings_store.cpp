#include "app/settings_store.h"

#include <filesystem>

#include "model/files.h"
#include "model/json.h"

namespace kinfolio {

std::string SettingsStore::defaultPath() {
    return configDirectory() + "/settings.json";
}

StoredState SettingsStore::load() const {
    StoredState state;
    auto file = MappedFile::open(path_);
    if (!file) return state;
    Json json = Json::parse(file->bytes(), nullptr, /*allow_exceptions=*/false);
    if (!json.is_object()) return state;
    if (auto it = json.find("settings"); it != json.end())
        state.settings = decode(*it, &state.warnings);
    if (auto it = json.find("materialsFolderBookmark"); it != json.end() && it->is_string())
        state.folder = it->get<std::string>();
    return state;
}

void SettingsStore::save(const Settings& settings, const std::optional<std::string>& folder) const {
    Json json = Json::object();
    json["settings"] = encode(settings);
    if (folder) json["materialsFolderBookmark"] = *folder;
    makeDirectories(std::filesystem::path(path_).parent_path().string(), 0700);
    writeFileAtomically(path_, json.dump(2) + "\n");
}

}  // namespace kinfolio
