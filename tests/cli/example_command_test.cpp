#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "cli/cli.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

std::map<std::string, std::string> tree(const fs::path& root) {
    std::map<std::string, std::string> out;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        out[fs::relative(entry.path(), root).string()] = testing::readFile(entry.path().string());
    }
    return out;
}

class ExampleCommandTest : public ::testing::Test {
protected:
    int run(std::vector<std::string> args) {
        out.str("");
        err.str("");
        return cli::run(args, out, err);
    }
    testing::TempFolder temp;
    fs::path root = temp.path();
    std::ostringstream out, err;
};

TEST_F(ExampleCommandTest, TwoRunsWriteByteIdenticalTrees) {
    fs::create_directories(root / "empty");
    ASSERT_EQ(run({"example", (root / "empty").string()}), 0) << err.str();
    ASSERT_EQ(run({"example", (root / "new/inner").string()}), 0) << err.str();
    auto first = tree(root / "empty"), second = tree(root / "new/inner");
    EXPECT_GE(first.size(), 12u);
    EXPECT_EQ(first, second);
    EXPECT_TRUE(first.contains("WhatsApp Chat - Jonas Berg.zip"));
    EXPECT_NE(out.str().find("Wrote the example materials folder"), std::string::npos);
}

TEST_F(ExampleCommandTest, ANonEmptyFolderIsRefusedAndLeftAlone) {
    fs::create_directories(root / "mine");
    std::ofstream(root / "mine/notes.txt") << "my own file";
    EXPECT_EQ(run({"example", (root / "mine").string()}), 1);
    EXPECT_NE(err.str().find("is not empty."), std::string::npos) << err.str();
    EXPECT_EQ(tree(root / "mine").size(), 1u);

    std::ofstream(root / "file") << "x";
    EXPECT_EQ(run({"example", (root / "file").string()}), 1);
    EXPECT_EQ(run({"example"}), 2);
}

TEST_F(ExampleCommandTest, GuidesPrintAllOrOne) {
    ASSERT_EQ(run({"guides"}), 0);
    std::string all = out.str();
    for (const char* title :
         {"WhatsApp on iPhone", "WhatsApp on Android", "Telegram", "Messenger", "Instagram", "LINE",
          "iMessage (with Quillory)", "Chat spreadsheet (CSV)", "E-mail"})
        EXPECT_NE(all.find(std::string("\n") + title + "\n"), std::string::npos) << title;
    ASSERT_EQ(run({"guides", "telegram"}), 0);
    EXPECT_NE(out.str().find("\u201cMachine-readable JSON\u201d"), std::string::npos);
    EXPECT_EQ(out.str().find("WhatsApp"), std::string::npos);
    EXPECT_EQ(run({"guides", "whatsapp"}), 2);  // two apps start so
    EXPECT_NE(err.str().find("whatsapp-iphone"), std::string::npos);
    EXPECT_EQ(run({"guides", "WhatsApp on Android"}), 0);
    EXPECT_NE(out.str().find("Export chat"), std::string::npos);
}

}  // namespace
}  // namespace kinfolio
