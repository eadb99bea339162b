#include "model/files.h"

#include <openssl/evp.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <signal.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>

#include "model/evidence.h"

namespace kinfolio {

std::string sha256Hex(std::string_view bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr);
    static const char* hex = "0123456789abcdef";
    std::string out(length * 2, '0');
    for (unsigned i = 0; i < length; ++i) {
        out[2 * i] = hex[digest[i] >> 4];
        out[2 * i + 1] = hex[digest[i] & 15];
    }
    return out;
}

namespace fs = std::filesystem;

namespace {

// Another program (a sync client, an export still being written) may shrink
// a file while it is mapped here, and touching a page past its new end raises
// SIGBUS, which would end the whole process. Each mapping is registered in a
// slot; the handler, finding the faulting address in one, maps zero pages
// over the rest of that mapping and marks it, so reading goes on to its end
// and the owner learns afterwards that the bytes are not to be trusted.
// A fault anywhere else goes to the handler that was there before.
struct GuardSlot {
    std::atomic<bool> taken{false};
    std::atomic<uintptr_t> start{0};
    std::atomic<size_t> length{0};
    std::atomic<bool> shrank{false};
};
constexpr int kGuardSlots = 512;
GuardSlot guardSlots[kGuardSlots];
struct sigaction previousBusHandler {};
uintptr_t pageSize = 4096;

void onBusError(int signal, siginfo_t* info, void* context) {
    auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    for (GuardSlot& slot : guardSlots) {
        uintptr_t start = slot.start.load(std::memory_order_acquire);
        size_t length = slot.length.load(std::memory_order_acquire);
        if (start == 0 || address < start || address >= start + length) continue;
        uintptr_t page = address & ~(pageSize - 1);
        void* zeros = ::mmap(reinterpret_cast<void*>(page), start + length - page, PROT_READ,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        if (zeros == MAP_FAILED) break;
        slot.shrank.store(true, std::memory_order_release);
        return;  // the read is tried again and now finds zeros
    }
    if (previousBusHandler.sa_flags & SA_SIGINFO) {
        if (previousBusHandler.sa_sigaction)
            return previousBusHandler.sa_sigaction(signal, info, context);
    } else if (previousBusHandler.sa_handler != SIG_DFL &&
               previousBusHandler.sa_handler != SIG_IGN) {
        return previousBusHandler.sa_handler(signal);
    }
    // The default action: the faulting read is tried again and ends the process.
    ::signal(SIGBUS, SIG_DFL);
}

void installBusHandler() {
    static std::once_flag once;
    std::call_once(once, [] {
        pageSize = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
        struct sigaction action {};
        action.sa_sigaction = onBusError;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &previousBusHandler);
    });
}

// A free slot now watching [start, start + length), or -1 when all are taken.
int guardMapping(const void* start, size_t length) {
    installBusHandler();
    for (int i = 0; i < kGuardSlots; ++i) {
        GuardSlot& slot = guardSlots[i];
        if (slot.taken.exchange(true, std::memory_order_acquire)) continue;
        slot.shrank.store(false, std::memory_order_relaxed);
        slot.length.store(length, std::memory_order_relaxed);
        slot.start.store(reinterpret_cast<uintptr_t>(start), std::memory_order_release);
        return i;
    }
    return -1;
}

void unguard(int i) {
    guardSlots[i].start.store(0, std::memory_order_release);
    guardSlots[i].taken.store(false, std::memory_order_release);
}

int64_t modificationTime(const struct stat& st) {
    return static_cast<int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
}

}  // namespace

std::optional<MappedFile> MappedFile::open(const std::string& path) {
    // O_NONBLOCK: a pipe put where a file was must not make the scan wait
    // for a writer; it is refused below as no regular file.
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) return std::nullopt;
    MappedFile file;
    file.fd_ = fd;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    file.openedSize_ = static_cast<int64_t>(st.st_size);
    file.openedTime_ = modificationTime(st);
    if (st.st_size > 0) {
        void* p = ::mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p != MAP_FAILED) {
            file.guard_ = guardMapping(p, static_cast<size_t>(st.st_size));
            if (file.guard_ >= 0) {
                // Files are read front to back once: hashing, then parsing.
                ::madvise(p, static_cast<size_t>(st.st_size), MADV_SEQUENTIAL);
                file.data_ = static_cast<const char*>(p);
                file.size_ = static_cast<size_t>(st.st_size);
                file.mapped_ = true;
                return file;
            }
            ::munmap(p, static_cast<size_t>(st.st_size));
        }
    }
    // Not mappable (empty, a file system that refuses, every guard in use):
    // read it whole.
    char buf[65536];
    while (true) {
        ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (n == 0) break;
        file.owned_.append(buf, static_cast<size_t>(n));
    }
    file.data_ = file.owned_.data();
    file.size_ = file.owned_.size();
    return file;
}

MappedFile::MappedFile(MappedFile&& other) noexcept {
    *this = std::move(other);
}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    if (this == &other) return *this;
    release();
    mapped_ = other.mapped_;
    owned_ = std::move(other.owned_);
    size_ = other.size_;
    data_ = mapped_ ? other.data_ : owned_.data();
    guard_ = other.guard_;
    fd_ = other.fd_;
    openedSize_ = other.openedSize_;
    openedTime_ = other.openedTime_;
    other.data_ = nullptr;
    other.size_ = 0;
    other.mapped_ = false;
    other.guard_ = -1;
    other.fd_ = -1;
    return *this;
}

void MappedFile::release() {
    if (guard_ >= 0) unguard(guard_);
    if (mapped_) ::munmap(const_cast<char*>(data_), size_);
    if (fd_ >= 0) ::close(fd_);
    guard_ = -1;
    fd_ = -1;
    mapped_ = false;
}

bool MappedFile::changed() const {
    if (guard_ >= 0 && guardSlots[guard_].shrank.load(std::memory_order_acquire)) return true;
    struct stat st {};
    if (fd_ < 0 || ::fstat(fd_, &st) != 0) return false;
    return static_cast<int64_t>(st.st_size) != openedSize_ || modificationTime(st) != openedTime_;
}

void MappedFile::releaseBefore(const char* end) {
    releaseBetween(data_, end);
}

void MappedFile::releaseBetween(const char* from, const char* to) {
    auto first = reinterpret_cast<uintptr_t>(from), last = reinterpret_cast<uintptr_t>(to);
    auto start = reinterpret_cast<uintptr_t>(data_);
    if (!mapped_ || first < start || last > start + size_ || last <= first) return;
    static const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    uintptr_t begin = start + (first - start + page - 1) / page * page;
    uintptr_t end = start + (last - start) / page * page;
    if (end > begin) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
}

size_t MappedFile::readableSlack() const {
    if (!mapped_) return 0;
    static const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    size_t used = size_ % page;
    return used == 0 ? 0 : page - used;
}

MappedFile::~MappedFile() {
    release();
}

namespace {

// The causes a person can act on get their own sentence; the rest name the
// system's reason.
[[noreturn]] void writeError(const std::string& path, int err) {
    switch (err) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            throw EvidenceError::invalid("There is not enough space to save " + path +
                                         ". Free some space on that disk, or save somewhere else.");
        case EACCES:
        case EPERM:
        case EROFS:
            throw EvidenceError::invalid("Kinfolio may not write to the folder of " + path +
                                         ". Choose another folder, for example Documents.");
        default:
            throw EvidenceError::invalid("Could not write " + path + ": " + std::strerror(err) +
                                         ".");
    }
}

std::string homeSubdirectory(const char* variable, const char* fallback) {
    const char* xdg = std::getenv(variable);
    if (xdg && *xdg == '/') return std::string(xdg) + "/kinfolio";
    const char* home = std::getenv("HOME");
    std::string base = (home && *home) ? home : "/tmp";
    return base + "/" + fallback + "/kinfolio";
}

// The bytes in a new hidden file beside `path`, synced; returns its name.
std::string writeTemporary(const std::string& path, std::string_view bytes) {
    fs::path target(path);
    fs::path dir = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    std::string tmpl = (dir / ("." + target.filename().string() + ".XXXXXX")).string();
    int fd = ::mkstemp(tmpl.data());
    if (fd < 0) writeError(path, errno);
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            int err = errno;
            ::close(fd);
            ::unlink(tmpl.c_str());
            writeError(path, err);
        }
        done += static_cast<size_t>(n);
    }
    // mkstemp makes the file 0600; a written document gets the usual mode.
    mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        int err = errno;
        ::unlink(tmpl.c_str());
        writeError(path, err);
    }
    return tmpl;
}

// Makes the folder if it is missing, closes it to others if it is open, and
// refuses it when it is not this user's own folder.
void makePrivateFolder(const std::string& dir) {
    if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST)
        throw EvidenceError::invalid("Could not create the folder " + dir + ": " +
                                     std::strerror(errno) + ".");
    // The folder holds unpacked chats: it must be ours and closed to others,
    // and never a symbolic link someone else planted.
    struct stat st {};
    if (::lstat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != ::getuid())
        throw EvidenceError::invalid("The cache folder " + dir +
                                     " is not a private folder of this user.");
    if ((st.st_mode & 0077) != 0 && ::chmod(dir.c_str(), 0700) != 0)
        throw EvidenceError::invalid("The cache folder " + dir + " could not be made private.");
}

}  // namespace

void writeFilesAtomically(const std::vector<FileBytes>& files) {
    std::vector<std::string> temporary;
    try {
        for (const auto& file : files)
            temporary.push_back(writeTemporary(file.path, file.bytes));
    } catch (const EvidenceError&) {
        for (const auto& t : temporary)
            ::unlink(t.c_str());
        throw;
    }
    for (size_t i = 0; i < files.size(); ++i)
        if (::rename(temporary[i].c_str(), files[i].path.c_str()) != 0) {
            int err = errno;
            for (size_t j = i; j < temporary.size(); ++j)
                ::unlink(temporary[j].c_str());
            writeError(files[i].path, err);
        }
}

void writeFileAtomically(const std::string& path, std::string_view bytes) {
    writeFilesAtomically({{path, bytes}});
}

std::string configDirectory() {
    return homeSubdirectory("XDG_CONFIG_HOME", ".config");
}

void makeDirectories(const std::string& path, unsigned mode) {
    std::error_code ec;
    fs::path p(path);
    fs::path current;
    for (const auto& part : p) {
        current /= part;
        if (current.string() == "/" || fs::is_directory(current, ec)) continue;
        if (::mkdir(current.c_str(), static_cast<mode_t>(mode)) != 0 && errno != EEXIST)
            throw EvidenceError::invalid("Could not create the folder " + current.string() + ": " +
                                         std::strerror(errno) + ".");
    }
}

std::string privateCacheDirectory(const std::string& sub) {
    std::string dir = homeSubdirectory("XDG_CACHE_HOME", ".cache");
    makeDirectories(fs::path(dir).parent_path().string(), 0700);
    makePrivateFolder(dir);
    if (sub.empty()) return dir;
    makePrivateFolder(dir + "/" + sub);
    return dir + "/" + sub;
}

}  // namespace kinfolio
