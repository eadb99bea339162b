#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

#include "cli/cli.h"
#include "model/json.h"
#include "model/source.h"

// One function per command, each in its own unit.
namespace kinfolio::cli {

Command scanCommand();
Command settingsCommand();
Command selectCommand();
Command exportCommand();
Command exampleCommand();
Command guidesCommand();

// "Label: done of total" on standard error as work goes on, when it is a
// terminal; nothing otherwise (an empty function).
std::function<void(size_t done, size_t total)> progressReport(Invocation& inv, std::string label);

// Checks that exactly one FOLDER argument was given and that it is a folder;
// prints the error and returns false otherwise.
bool takeFolder(Invocation& inv, std::string& folder);
// Scans with the effective date order and time zone, reporting progress on
// standard error when it is a terminal.
ScanResult scanFolder(Invocation& inv, const std::string& folder);

// What select prints for a scan and settings: as JSON, or as text with the
// coverage lines first and then one line per selected item.
Json selectionJson(const ScanResult& scan, const Settings& settings);
void printSelection(std::ostream& out, const ScanResult& scan, const Settings& settings);

}  // namespace kinfolio::cli
