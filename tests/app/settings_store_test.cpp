#include "app/settings_store.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_folder.h"

namespace kinfolio {
namespace {

TEST(SettingsStore, SavesAndLoadsSettingsAndTheFolderAtomically) {
    testing::TempFolder dir;
    SettingsStore store(dir.path() + "/kinfolio/settings.json");
    EXPECT_FALSE(store.load().settings);
    Settings s = Settings::defaults();
    s.partner = "Alex Morgan";
    store.save(Settings::defaults(), std::nullopt);
    store.save(s, std::string("/home/sam/materials"));
    StoredState back = SettingsStore(store.path()).load();
    EXPECT_EQ(back.settings, s);
    EXPECT_EQ(back.folder, "/home/sam/materials");
    Json file = Json::parse(testing::readFile(store.path()));
    EXPECT_EQ(file["settings"], encode(s));
    EXPECT_EQ(file["materialsFolderBookmark"], "/home/sam/materials");
    // Only the file: no temporary file is left behind.
    auto entries = std::filesystem::directory_iterator(dir.path() + "/kinfolio");
    EXPECT_EQ(std::distance(entries, std::filesystem::directory_iterator()), 1);

    testing::ScopedEnvironment config("XDG_CONFIG_HOME", "/tmp/kf-config");
    EXPECT_EQ(SettingsStore::defaultPath(), "/tmp/kf-config/kinfolio/settings.json");
}

// A file that cannot be used reads as nothing stored, keeping what is sound.
TEST(SettingsStore, ADamagedFileKeepsOnlyWhatIsSound) {
    Json missingTitle = encode(Settings::defaults());
    missingTitle.erase("title");
    struct Case {
        const char* name;
        std::string file;
        std::optional<std::string> folder;
    };
    const Case cases[] = {
        {"settings missing a key",
         Json{{"settings", missingTitle}, {"materialsFolderBookmark", "/x"}}.dump(), "/x"},
        {"cut off", R"({"settings": {"title": )", std::nullopt},
        {"a folder that is not a path", R"({"materialsFolderBookmark": 5})", std::nullopt},
    };
    for (const auto& c : cases) {
        testing::TempFolder dir;
        StoredState state = SettingsStore(dir.write("settings.json", c.file)).load();
        EXPECT_FALSE(state.settings) << c.name;
        EXPECT_EQ(state.folder, c.folder) << c.name;
    }
}

}  // namespace
}  // namespace kinfolio
