#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/settings.h"

// The pure parts of saving an export, shared by the command line and the
// application model.
namespace kinfolio::ExportFlow {

// Title and applicant joined with " - ", "Relationship evidence" when both
// are empty, every "/" made "-". Without ".pdf".
std::string baseName(const Settings& settings);
// base + " - Part " + i + " of " + n + ".pdf", i from 1.
std::string partName(const std::string& base, int i, int n);
// maxFileMB × 1,000,000, or 0 for no limit.
int64_t byteLimit(const Settings& settings);
// "The PDF is split into n files of at most m MB each. Page numbers continue
// from one file to the next."
std::string splitMessage(int parts, int maxFileMB);
// "One page is larger than m MB on its own, so its file is over the limit. Use
// fewer or smaller photos on that page."
std::string oversizeMessage(int maxFileMB);

}  // namespace kinfolio::ExportFlow
