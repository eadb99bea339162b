#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "app/example_folder.h"
#include "cli/cli.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

TEST(ScanCommand, ReportsProgressOnlyToATerminal) {
    fs::path folder = fs::temp_directory_path() / ("kinfolio_scan_" + std::to_string(::getpid()));
    fs::remove_all(folder);
    ExampleFolder::write(folder.string());
    size_t total = ExampleFolder::files().size();

    std::ostringstream out, err;
    EXPECT_EQ(cli::run({"scan", folder.string()}, out, err, /*showProgress=*/true), 0);
    EXPECT_NE(err.str().find("Reading files: " + std::to_string(total) + " of " +
                             std::to_string(total) + "\n"),
              std::string::npos)
        << err.str();

    std::ostringstream quietOut, quietErr;
    EXPECT_EQ(cli::run({"scan", folder.string()}, quietOut, quietErr, false), 0);
    EXPECT_EQ(quietErr.str(), "");
    EXPECT_EQ(quietOut.str(), out.str());
    fs::remove_all(folder);
}

}  // namespace
}  // namespace kinfolio
