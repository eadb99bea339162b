#include <filesystem>
#include <system_error>

#include "model/parallel.h"
#include "model/text.h"
#include "scan/scan_context.h"
#include "scan/scanner.h"

namespace kinfolio::Scanner {

std::string ScanContext::displayPath(const std::string& path) const {
    std::string normal = std::filesystem::path(path).lexically_normal().string();
    std::string prefix = folder + "/";
    if (startsWith(normal, prefix)) return normal.substr(prefix.size());
    return std::filesystem::path(normal).filename().string();
}

void ScanContext::skip(const std::string& path, std::string reason) {
    skipped.push_back(SkippedFile{displayPath(path), std::move(reason)});
}

std::optional<Record> ScanContext::open(const std::string& path, bool alongside) {
    auto data = MappedFile::open(path);
    if (!data) {
        skip(path, "Could not be read.");
        return std::nullopt;
    }
    // Every empty file has the same fingerprint; none is a copy of another.
    if (data->size() == 0) {
        skip(path, "The file is empty. Copy it again from where it came from.");
        return std::nullopt;
    }
    Record r{path,
             FileRecord{displayPath(path), "", static_cast<int64_t>(data->size())},
             std::move(*data),
             {}};
    // Below a megabyte a thread costs more than it saves.
    constexpr size_t kFingerprintAlongside = 1 << 20;
    if (alongside && r.data.size() >= kFingerprintAlongside && Parallel::threads() > 1) {
        try {
            r.fingerprint = std::async(std::launch::async,
                                       [bytes = r.data.bytes()] { return sha256Hex(bytes); });
        } catch (const std::system_error&) {
            // No thread to be had: admit() takes the fingerprint itself.
        }
    }
    return r;
}

bool ScanContext::admit(Record& r) {
    if (!r.file.sha256.empty()) return true;
    std::string hash = r.fingerprint.valid() ? r.fingerprint.get() : sha256Hex(r.data.bytes());
    if (r.data.changed()) {
        skip(r.path, kChangedWhileRead);
        return false;
    }
    auto [it, isNew] = firstPathOfHash.emplace(hash, r.file.path);
    if (!isNew) {
        skip(r.path, "Same file as " + it->second + ".");
        return false;
    }
    r.file.sha256 = std::move(hash);
    recordedPaths[r.path] = r.file;
    admittedSizes.insert(r.file.bytes);
    return true;
}

std::optional<Record> ScanContext::record(const std::string& path) {
    auto r = open(path);
    if (!r || !admit(*r)) return std::nullopt;
    return r;
}

std::optional<FileRecord> ScanContext::recordAttachment(const std::string& path) {
    if (auto it = recordedPaths.find(path); it != recordedPaths.end()) return it->second;
    auto r = record(path);
    if (!r) return std::nullopt;
    return r->file;
}

std::optional<std::string> decodeText(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    return decodeUtf16(bytes);
}

std::optional<std::string_view> textOf(std::string_view bytes, std::string& decoded) {
    std::string_view text = bytes;
    if (!isValidUtf8(bytes)) {
        auto utf16 = decodeUtf16(bytes);
        if (!utf16) return std::nullopt;
        decoded = std::move(*utf16);
        text = decoded;
    }
    if (startsWith(text, "\uFEFF")) text.remove_prefix(3);
    return text;
}

}  // namespace kinfolio::Scanner
