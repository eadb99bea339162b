#pragma once

#include "cli/cli.h"

// One function per command, each in its own unit.
namespace kinfolio::cli {

Command scanCommand();
Command settingsCommand();
Command exampleCommand();
Command guidesCommand();

// Checks that exactly one FOLDER argument was given and that it is a folder;
// prints the error and returns false otherwise.
bool takeFolder(Invocation& inv, std::string& folder);

}  // namespace kinfolio::cli
