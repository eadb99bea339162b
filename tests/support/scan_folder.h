#pragma once

// Scanning a folder a test has written, and what the user reads of the result.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/scan_lookup.h"
#include "support/temp_folder.h"

namespace kinfolio::testing {

using Files = std::vector<std::pair<std::string, std::string>>;

// Writes the files below `dir` and scans it; the scan must leave everything
// in the folder as it was.
inline ScanResult scanFiles(const TempFolder& dir, const Files& files,
                            DateOrder order = DateOrder::automatic,
                            const std::string& zone = "UTC") {
    for (const auto& [path, bytes] : files)
        dir.write(path, bytes);
    std::string before = folderFingerprint(dir.path());
    ScanResult result = Scanner::scan(dir.path(), order, zone);
    EXPECT_EQ(folderFingerprint(dir.path()), before);
    return result;
}

// The same in a folder of its own.
inline ScanResult scanFiles(const Files& files, DateOrder order = DateOrder::automatic,
                            const std::string& zone = "UTC") {
    TempFolder dir;
    return scanFiles(dir, files, order, zone);
}

// A source as its row shows it: "first file | name | summary".
inline std::string shown(const Source& s) {
    return s.files.at(0).path + " | " + s.name + " | " + s.detail;
}

// Every source's row, sorted, then each skipped file as "path | reason".
inline std::vector<std::string> shown(const ScanResult& scan) {
    std::vector<std::string> lines;
    for (const Source& s : scan.sources)
        lines.push_back(shown(s));
    std::sort(lines.begin(), lines.end());
    for (const SkippedFile& s : scan.skipped)
        lines.push_back(s.path + " | " + s.reason);
    return lines;
}

// Each item in order as "yyyy-MM-dd HH:mm sender: text".
inline std::vector<std::string> itemLines(const Source& s) {
    std::vector<std::string> lines;
    for (const Evidence& e : s.items)
        lines.push_back(Calendar::format(e.date, "yyyy-MM-dd HH:mm") + " " + e.sender.str() + ": " +
                        e.text);
    return lines;
}

}  // namespace kinfolio::testing
