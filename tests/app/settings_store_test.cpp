#include "app/settings_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/temp_folder.h"

namespace kinfolio {
namespace {

using testing::TempFolder;

TEST(SettingsStore, SavesAndLoadsSettingsAndTheFolder) {
    TempFolder dir;
    SettingsStore store(dir.path() + "/config/kinfolio/settings.json");
    EXPECT_FALSE(store.load().settings.has_value());
    Settings s = Settings::defaults();
    s.partner = "Alex Morgan";
    store.save(s, std::string("/home/sam/materials"));
    StoredState back = SettingsStore(store.path()).load();
    ASSERT_TRUE(back.settings.has_value());
    EXPECT_EQ(*back.settings, s);
    EXPECT_EQ(back.folder, "/home/sam/materials");
    Json file = Json::parse(testing::readFile(store.path()));
    EXPECT_TRUE(file.contains("settings"));
    EXPECT_EQ(file["materialsFolderBookmark"], "/home/sam/materials");
}

TEST(SettingsStore, AStoredValueMissingAKeyGivesNoSettingsButKeepsTheFolder) {
    TempFolder dir;
    Json settings = encode(Settings::defaults());
    settings.erase("title");
    Json file = {{"settings", settings}, {"materialsFolderBookmark", "/x"}};
    std::string path = dir.write("settings.json", file.dump());
    StoredState state = SettingsStore(path).load();
    EXPECT_FALSE(state.settings.has_value());
    EXPECT_EQ(state.folder, "/x");
}

TEST(SettingsStore, ADamagedFileReadsAsNothingStored) {
    TempFolder dir;
    std::string path = dir.write("settings.json", "{\"settings\": {\"title\": ");
    StoredState state = SettingsStore(path).load();
    EXPECT_FALSE(state.settings.has_value());
    EXPECT_FALSE(state.folder.has_value());
}

TEST(SettingsStore, SavingLeavesNoTemporaryFileBehind) {
    TempFolder dir;
    SettingsStore store(dir.path() + "/settings.json");
    store.save(Settings::defaults(), std::nullopt);
    store.save(Settings::defaults(), std::nullopt);
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir.path())) {
        (void)e;
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST(SettingsStore, DefaultPathFollowsXdgConfigHome) {
    const char* old = std::getenv("XDG_CONFIG_HOME");
    std::string saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", "/tmp/kf-config", 1);
    EXPECT_EQ(SettingsStore::defaultPath(), "/tmp/kf-config/kinfolio/settings.json");
    if (old)
        ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace kinfolio
