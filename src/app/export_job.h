#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/app_services.h"
#include "layout/pdf_exporter.h"
#include "model/settings.h"
#include "model/source.h"
#include "selection/selection.h"

// Saving the PDF of a scan: the one job behind both `kinfolio-cli export` and
// the window's Export, plus the pure parts it is made of.
namespace kinfolio::ExportJob {

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

// What the document is made from: copies of the items in layout order, the
// settings, every source file of the scan, and the number of chats the items
// come from. The copies are the layout's own, so this runs where the
// rendering does, never on the window's thread.
ExportInput input(const ScanResult& scan, const Settings& settings,
                  const Selection::ItemRefs& items);

struct Written {
    std::vector<std::string> files;  // in part order
    std::vector<std::string> notes;  // the split note and the oversize warning
};

// Writes the rendered parts, all or none of them: one part to `target`
// itself, several as "<target's name without .pdf> - Part i of n.pdf" in its
// folder. Throws EvidenceError when a file cannot be written.
Written writeParts(const std::vector<std::string>& parts, const Settings& settings,
                   const std::string& target);

struct Result {
    Written written;
    int pageCount = 0;
};

// The whole export of a scan: selects with `services.selected`, draws with
// `services.make` (where a caller that shows progress reports it), splits
// with `services.split` when maxFileMB is set, and writes the parts to
// `target`. Throws EvidenceError with the sentence for the user.
Result run(const AppServices& services, const ScanResult& scan, const Settings& settings,
           const std::string& target);

}  // namespace kinfolio::ExportJob
