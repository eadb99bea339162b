#include "media/zip_archive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "model/evidence.h"
#include "model/files.h"
#include "model/text.h"

namespace kinfolio {

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kEndSignature = 0x06054B50;
constexpr uint32_t kCentralSignature = 0x02014B50;
constexpr uint32_t kLocalSignature = 0x04034B50;
constexpr size_t kEndSize = 22;
constexpr size_t kCentralSize = 46;
constexpr size_t kLocalSize = 30;
constexpr size_t kMaxComment = 65535;

// Declared sizes come from the archive and may lie; an entry may not ask for
// more than this before a byte is decoded.
constexpr int64_t kMaxEntrySize = int64_t{4} << 30;
constexpr int64_t kMaxRatio = 1000;

const char* kNotAZip = "Not a ZIP file Kinfolio can read.";

uint16_t u16(std::string_view d, size_t at) {
    auto b = reinterpret_cast<const unsigned char*>(d.data()) + at;
    return static_cast<uint16_t>(b[0] | b[1] << 8);
}
uint32_t u32(std::string_view d, size_t at) {
    return static_cast<uint32_t>(u16(d, at)) | static_cast<uint32_t>(u16(d, at + 2)) << 16;
}

EvidenceError unpackError(const ZipArchive::Entry& e) {
    return EvidenceError::invalid("Could not unpack " + e.path + ".");
}

[[noreturn]] void fileError(const std::string& what, const std::string& path) {
    throw EvidenceError::invalid("Could not " + what + " " + path + ": " + std::strerror(errno) +
                                 ".");
}

struct Fd {
    int fd = -1;
    explicit Fd(int f) : fd(f) {}
    Fd(Fd&& o) noexcept : fd(o.fd) { o.fd = -1; }
    Fd& operator=(Fd&& o) noexcept {
        std::swap(fd, o.fd);
        return *this;
    }
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
};

// Opens (creating it when missing) one folder below `parent` without ever
// following a symbolic link: a link planted there makes the open fail.
Fd openFolder(int parent, const std::string& name, const std::string& shown) {
    if (::mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST)
        fileError("create the folder", shown);
    int fd = ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) fileError("open the folder", shown);
    return Fd(fd);
}

// Writes through a fresh file beside the target and renames it over the
// target, which replaces a planted link instead of writing through it.
void writeAt(int dir, const std::string& name, std::string_view bytes, const std::string& shown) {
    std::string temp = "." + name + ".part";
    ::unlinkat(dir, temp.c_str(), 0);
    Fd out(::openat(dir, temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (out.fd < 0) fileError("write", shown);
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(out.fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            int err = errno;
            ::unlinkat(dir, temp.c_str(), 0);
            errno = err;
            fileError("write", shown);
        }
        done += static_cast<size_t>(n);
    }
    if (::renameat(dir, temp.c_str(), dir, name.c_str()) != 0) {
        int err = errno;
        ::unlinkat(dir, temp.c_str(), 0);
        errno = err;
        fileError("write", shown);
    }
}

}  // namespace

ZipArchive::ZipArchive(std::shared_ptr<const void> owner, std::string_view data)
    : owner_(std::move(owner)), data_(data), entries_(readDirectory(data)) {}

ZipArchive ZipArchive::open(const std::string& path) {
    auto mapped = MappedFile::open(path);
    if (!mapped) throw EvidenceError::invalid("Could not read " + path + ".");
    return fromMapped(std::move(*mapped));
}

ZipArchive ZipArchive::fromMapped(MappedFile file) {
    auto owner = std::make_shared<const MappedFile>(std::move(file));
    std::string_view data = owner->bytes();
    return ZipArchive(std::move(owner), data);
}

ZipArchive ZipArchive::fromBytes(std::string bytes) {
    auto owner = std::make_shared<const std::string>(std::move(bytes));
    std::string_view data = *owner;
    return ZipArchive(std::move(owner), data);
}

std::vector<ZipArchive::Entry> ZipArchive::readDirectory(std::string_view data) {
    size_t count = data.size();
    if (count < kEndSize) throw EvidenceError::invalid(kNotAZip);
    // The end record sits behind the last entry, followed only by the
    // archive comment (at most 65535 bytes); the last match wins.
    size_t lowest = count > kEndSize + kMaxComment ? count - kEndSize - kMaxComment : 0;
    size_t end = count - kEndSize;
    while (u32(data, end) != kEndSignature) {
        if (end == lowest) throw EvidenceError::invalid(kNotAZip);
        --end;
    }
    size_t total = u16(data, end + 10);
    size_t at = u32(data, end + 16);
    std::vector<Entry> entries;
    if (total == 0) return entries;
    // The count comes from the archive: never reserve more than the records
    // that could fit.
    entries.reserve(std::min(total, count / kCentralSize));
    for (size_t i = 0; i < total; ++i) {
        if (at > count || count - at < kCentralSize) throw EvidenceError::invalid(kNotAZip);
        if (u32(data, at) != kCentralSignature) throw EvidenceError::invalid(kNotAZip);
        size_t n = u16(data, at + 28), m = u16(data, at + 30), k = u16(data, at + 32);
        if (count - at - kCentralSize < n) throw EvidenceError::invalid(kNotAZip);
        Entry e;
        e.path = repairUtf8(data.substr(at + kCentralSize, n));
        e.method = u16(data, at + 10);
        e.compressedSize = u32(data, at + 20);
        e.size = u32(data, at + 24);
        e.localOffset = u32(data, at + 42);
        entries.push_back(std::move(e));
        at += kCentralSize + n + m + k;
    }
    return entries;
}

std::string ZipArchive::contents(const Entry& entry) const {
    auto size = static_cast<int64_t>(data_.size());
    if (entry.localOffset + static_cast<int64_t>(kLocalSize) > size) throw unpackError(entry);
    auto local = static_cast<size_t>(entry.localOffset);
    if (u32(data_, local) != kLocalSignature) throw unpackError(entry);
    int64_t start = entry.localOffset + static_cast<int64_t>(kLocalSize) + u16(data_, local + 26) +
                    u16(data_, local + 28);
    if (start + entry.compressedSize > size) throw unpackError(entry);
    std::string_view packed =
        data_.substr(static_cast<size_t>(start), static_cast<size_t>(entry.compressedSize));

    if (entry.method == 0) return std::string(packed);
    if (entry.method != 8)
        throw EvidenceError::invalid(entry.path +
                                     " uses a ZIP compression Kinfolio does not read.");
    if (entry.size < 1) return {};
    // A lying size would make us allocate gigabytes for a few bytes of input.
    if (entry.size > kMaxEntrySize || entry.size > kMaxRatio * std::max<int64_t>(1, packed.size()))
        throw unpackError(entry);

    std::string out(static_cast<size_t>(entry.size), '\0');
    z_stream z{};
    if (inflateInit2(&z, -15) != Z_OK) throw unpackError(entry);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    z.avail_in = static_cast<uInt>(packed.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    int status = inflate(&z, Z_FINISH);
    uLong produced = z.total_out;
    inflateEnd(&z);
    // Output beyond `size` is cut off; fewer bytes, or a broken stream, fail.
    bool full = produced == static_cast<uLong>(entry.size);
    if (!full || (status != Z_STREAM_END && status != Z_OK && status != Z_BUF_ERROR))
        throw unpackError(entry);
    return out;
}

void ZipArchive::extract(const std::string& destination) const {
    fs::path base = fs::absolute(destination).lexically_normal();
    std::string baseText = base.string();
    while (baseText.size() > 1 && baseText.back() == '/')
        baseText.pop_back();
    std::string prefix = baseText + "/";
    makeDirectories(baseText, 0700);
    Fd root(::open(baseText.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (root.fd < 0) fileError("open the folder", baseText);

    for (const auto& entry : entries_) {
        if (endsWith(entry.path, "/") || startsWith(entry.path, "__MACOSX")) continue;
        std::string target = (fs::path(baseText) / entry.path).lexically_normal().string();
        // "../" and absolute names would land outside the destination.
        if (!startsWith(target, prefix) || target.size() == prefix.size() || target.back() == '/')
            continue;
        fs::path relative(target.substr(prefix.size()));
        Fd dir(::dup(root.fd));
        std::string shown = baseText;
        for (auto it = relative.begin(); it != relative.end(); ++it) {
            if (std::next(it) == relative.end()) break;
            shown += "/" + it->string();
            dir = openFolder(dir.fd, it->string(), shown);
        }
        std::string bytes = contents(entry);
        writeAt(dir.fd, relative.filename().string(), bytes, target);
    }
}

}  // namespace kinfolio
