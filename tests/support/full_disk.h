#pragma once

#include <sys/resource.h>

#include <csignal>

namespace kinfolio::testing {

// A full disk, as the system reports it to a process over its file size
// limit, for the life of the object: a write past `bytes` fails with EFBIG.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        previous_ = std::signal(SIGXFSZ, SIG_IGN);  // the write fails instead
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, previous_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit saved_{};
    void (*previous_)(int) = nullptr;
};

}  // namespace kinfolio::testing
