#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kinfolio::PDFExporter {

// The plain greedy packing: every part grows one page at a time and each
// candidate is serialised to measure it. `split` must return exactly these
// parts; this slow form is kept to prove that in tests and benchmarks.
std::vector<std::string> splitOnePageAtATime(const std::string& data, int64_t maxBytes);

}  // namespace kinfolio::PDFExporter
