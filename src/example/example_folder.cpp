#include "example/example_folder.h"

#include <algorithm>
#include <filesystem>

#include "example/example_parts.h"
#include "model/files.h"

namespace kinfolio::ExampleFolder {

namespace fs = std::filesystem;

Files files() {
    Files out;
    addWhatsApp(out);
    addTelegram(out);
    addMeta(out);
    addLine(out);
    addSpreadsheets(out);
    addEmails(out);
    std::sort(out.begin(), out.end());
    return out;
}

void write(const std::string& folder) {
    std::error_code ec;
    if (fs::exists(folder, ec)) {
        if (!fs::is_directory(folder, ec))
            throw EvidenceError::invalid(folder +
                                         " is a file, not a folder. Choose an empty or new "
                                         "folder for the example.");
        if (!fs::is_empty(folder, ec) || ec)
            throw EvidenceError::invalid("The folder " + folder +
                                         " is not empty. Choose an empty or new folder for the "
                                         "example, so that none of your own files is mixed in.");
    }
    // Everything is made in memory first, so a failure leaves nothing half written.
    Files all = files();
    makeDirectories(folder);
    for (const auto& [path, bytes] : all) {
        fs::path target = fs::path(folder) / path;
        makeDirectories(target.parent_path().string());
        writeFileAtomically(target.string(), bytes);
    }
}

bool holdsExample(const std::string& folder) {
    for (const auto& [path, bytes] : files()) {
        auto file = MappedFile::open((fs::path(folder) / path).string());
        if (!file || file->bytes() != bytes) return false;
    }
    return true;
}

}  // namespace kinfolio::ExampleFolder
