#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"

namespace kinfolio::testing {

// What a kinfolio-cli command printed and how it ended.
struct CliOutcome {
    int status;
    std::string out, err;
};

// Runs a command in this process as the program would, its standard error a
// terminal when `showProgress` is set.
inline CliOutcome runCli(const std::vector<std::string>& args, bool showProgress = false) {
    std::ostringstream out, err;
    int status = cli::run(args, out, err, showProgress);
    return {status, out.str(), err.str()};
}

}  // namespace kinfolio::testing
