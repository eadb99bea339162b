#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "model/settings.h"

namespace kinfolio::cli {

// What every command is given: its streams, the effective settings and the
// arguments left after the shared options.
struct Invocation {
    std::ostream& out;
    std::ostream& err;
    Settings settings;
    bool json = false;
    std::optional<std::string> output;  // -o PATH
    std::vector<std::string> arguments;
    bool showProgress = false;  // standard error is a terminal
    // The command line has no "later": screenshots are read before anything
    // is selected, unless --no-screenshot-text says not to.
    bool readScreenshotText = true;
    // The program ends with this command: see finish().
    bool lastInProcess = false;
};

// A command's status once its output is written. When the program ends with
// the command, it exits here, leaving its memory to the system: freeing the
// million items of a large chat one by one is a moment the user waits for.
int finish(Invocation& inv, int status);

struct Command {
    std::string name;
    std::string usage;    // "scan FOLDER [--json]"
    std::string summary;  // one line
    std::string help;     // the rest of its --help
    std::function<int(Invocation&)> run;
};

// Every command, in the order --help lists them.
const std::vector<Command>& commands();

// Runs one command line (without the program name); returns the exit status:
// 0 success, 1 the work failed, 2 the command line was wrong. With
// `lastInProcess` a command may end the process instead of returning.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        bool showProgress = false, bool lastInProcess = false);

}  // namespace kinfolio::cli
