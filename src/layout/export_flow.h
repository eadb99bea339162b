#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "layout/pdf_exporter.h"
#include "model/settings.h"
#include "model/source.h"

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

// What the document is made from: the items in layout order, the settings,
// every source file of the scan, and the number of chats the items come from.
ExportInput input(const ScanResult& scan, const Settings& settings, std::vector<Evidence> items);

struct Written {
    std::vector<std::string> files;  // in part order
    std::vector<std::string> notes;  // the split note and the oversize warning
};

// Writes the rendered parts, each atomically: one part to `target` itself,
// several as "<target's name without .pdf> - Part i of n.pdf" in its folder.
// Throws EvidenceError when a file cannot be written.
Written writeParts(const std::vector<std::string>& parts, const Settings& settings,
                   const std::string& target);

}  // namespace kinfolio::ExportFlow
