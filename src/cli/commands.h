#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "cli/cli.h"

// One function per command, each in its own unit.
namespace kinfolio::cli {

Command scanCommand();
Command settingsCommand();
Command exampleCommand();
Command guidesCommand();

// "Label: done of total" on standard error as work goes on, when it is a
// terminal; nothing otherwise (an empty function).
std::function<void(size_t done, size_t total)> progressReport(Invocation& inv, std::string label);

// Checks that exactly one FOLDER argument was given and that it is a folder;
// prints the error and returns false otherwise.
bool takeFolder(Invocation& inv, std::string& folder);

}  // namespace kinfolio::cli
