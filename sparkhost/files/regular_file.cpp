// Regular files only, measured before they are read.
#include "sparkhost/files/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "sparkhost/core/error.h"

namespace sparkhost {

namespace {

std::string quoted(const std::string &path) { return "'" + path + "'"; }

const char *kind_of(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a file";
}

[[noreturn]] void refuse(const std::string &path, int error) {
    if (error == ENOENT) throw Error("no such file " + quoted(path));
    throw Error("cannot read " + quoted(path) + ": " + std::strerror(error));
}

void require_regular(const std::string &path, const struct stat &info) {
    if (S_ISREG(info.st_mode)) return;
    if (S_ISDIR(info.st_mode)) throw Error(quoted(path) + " is a directory");
    throw Error(quoted(path) + " is " + kind_of(info.st_mode) + ", not a regular file");
}

std::string megabytes(std::uintmax_t bytes) { return std::to_string((bytes + (1u << 20) - 1) >> 20) + " MB"; }

}  // namespace

void check_regular_file(const std::string &path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) refuse(path, errno);
    require_regular(path, info);
}

std::string read_regular_file(const std::string &path, std::uintmax_t largest) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) refuse(path, errno);
    struct FdCloser {
        int fd;
        ~FdCloser() { ::close(fd); }
    } closer{fd};
    struct stat info {};
    if (::fstat(fd, &info) != 0) refuse(path, errno);
    require_regular(path, info);
    const auto too_large = [&] {
        throw Error(quoted(path) + " is larger than " + megabytes(largest) + ", more than such a file can be");
    };
    if (std::uintmax_t(info.st_size) > largest) too_large();
    std::string content(std::size_t(info.st_size), '\0');
    std::size_t have = 0;
    for (;;) {
        // A file that grows while being read is read to its end, within the bound.
        if (have == content.size()) {
            if (content.size() >= largest + 1) too_large();
            content.resize(std::size_t(std::min<std::uintmax_t>(largest + 1, content.size() + 65536)));
        }
        const ssize_t got = ::read(fd, &content[have], content.size() - have);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) refuse(path, errno);
        if (got == 0) break;
        have += std::size_t(got);
    }
    if (have > largest) too_large();
    content.resize(have);
    return content;
}

}  // namespace sparkhost
