#pragma once

#include <cstddef>

#include "model/source.h"
#include "scan/scanner.h"

// Reading the text of a scan's screenshots, so that redaction can cover the
// lines that hold a hidden word.
namespace kinfolio::Scanner {

// Screenshots whose lines are not known yet: no line was found, or none was
// looked for. A screenshot without text counts again, but costs nothing then,
// because its empty answer is kept.
size_t screenshotsToRead(const ScanResult& scan);

// Recognises those screenshots on every core and writes their lines (and,
// when any were found, their text) into the scan. `progress(read, total)`
// comes in order, from one thread at a time.
void recognizeScreenshots(ScanResult& scan, const Progress& progress = {});

}  // namespace kinfolio::Scanner
