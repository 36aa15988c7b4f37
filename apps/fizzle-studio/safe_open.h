// Opening a name under a directory without ever leaving it: each step is
// taken from a descriptor already held, so a link swapped in between a
// check and the open cannot lead outside.
#pragma once

#include <fcntl.h>

#include <string>

// A file descriptor closed when it goes out of scope.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd();
    UniqueFd(UniqueFd &&other) noexcept : fd_(other.release()) {}
    UniqueFd &operator=(UniqueFd &&other) noexcept;
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_ = -1;
};

// Opens relative (no leading '/') beneath root_fd, the open directory whose
// canonical path is root_path, with flags (O_CLOEXEC added; O_CREAT not
// supported). Links are followed only while they stay beneath the root;
// a link or ".." leading out fails with EXDEV. Returns -1 with errno set.
// Tries openat2 with RESOLVE_BENEATH first, then the walk below.
int open_beneath(int root_fd, const std::string &root_path, const std::string &relative, int flags);

// The same, walking one name at a time with O_NOFOLLOW and reading links
// itself (for kernels without openat2, and for links given as absolute
// paths into the root, which openat2 refuses).
int open_beneath_walk(int root_fd, const std::string &root_path, const std::string &relative, int flags);

// "/proc/self/fd/N": a name for an open descriptor that file functions
// taking a path can open, reaching exactly the file or folder already open.
std::string descriptor_path(int fd);
