// Name resolution under a held directory, in the kernel where it can and
// one name at a time where it cannot.
#include "safe_open.h"

#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <vector>

UniqueFd::~UniqueFd() {
    if (fd_ >= 0) close(fd_);
}

UniqueFd &UniqueFd::operator=(UniqueFd &&other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) close(fd_);
        fd_ = other.release();
    }
    return *this;
}

namespace {

// Links followed in one walk before giving up, as the kernel's own limit.
constexpr int kMostLinks = 40;

// The names of path, last first, so that the next one is at the back.
void push_names(std::vector<std::string> &pending, const std::string &path) {
    std::vector<std::string> names;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        if (end > start) names.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    pending.insert(pending.end(), names.rbegin(), names.rend());
}

}  // namespace

int open_beneath_walk(int root_fd, const std::string &root_path, const std::string &relative, int flags) {
    flags |= O_CLOEXEC;
    if ((flags & O_CREAT) || relative.find('\0') != std::string::npos) {
        errno = EINVAL;
        return -1;
    }
    if (!relative.empty() && relative[0] == '/') {
        errno = EXDEV;
        return -1;
    }
    std::vector<std::string> pending;
    push_names(pending, relative);
    // The folders entered below the root; ".." leaves the last one, never the root.
    std::vector<UniqueFd> entered;
    int links = 0;
    while (!pending.empty()) {
        const std::string name = pending.back();
        pending.pop_back();
        const int here = entered.empty() ? root_fd : entered.back().get();
        if (name == ".") continue;
        if (name == "..") {
            if (entered.empty()) {
                errno = EXDEV;
                return -1;
            }
            entered.pop_back();
            continue;
        }
        UniqueFd step(openat(here, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        if (!step) return -1;
        struct stat info;
        if (fstat(step.get(), &info) != 0) return -1;
        if (S_ISLNK(info.st_mode)) {
            if (++links > kMostLinks) {
                errno = ELOOP;
                return -1;
            }
            char target[PATH_MAX];
            const ssize_t length = readlinkat(step.get(), "", target, sizeof target);
            if (length <= 0 || size_t(length) >= sizeof target) {
                errno = length < 0 ? errno : ENAMETOOLONG;
                return -1;
            }
            std::string text(target, size_t(length));
            if (text[0] == '/') {
                // An absolute link is followed only into the root, from the root.
                if (text.compare(0, root_path.size(), root_path) != 0 ||
                    (text.size() > root_path.size() && text[root_path.size()] != '/')) {
                    errno = EXDEV;
                    return -1;
                }
                text.erase(0, root_path.size());
                entered.clear();
            }
            push_names(pending, text);
            continue;
        }
        if (pending.empty()) return openat(here, name.c_str(), flags | O_NOFOLLOW);
        if (!S_ISDIR(info.st_mode)) {
            errno = ENOTDIR;
            return -1;
        }
        entered.push_back(std::move(step));
    }
    return openat(entered.empty() ? root_fd : entered.back().get(), ".", flags);
}

int open_beneath(int root_fd, const std::string &root_path, const std::string &relative, int flags) {
    if (relative.find('\0') != std::string::npos) {
        errno = EINVAL;
        return -1;
    }
    struct open_how how = {};
    how.flags = uint64_t(flags | O_CLOEXEC);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    const std::string name = relative.empty() ? "." : relative;
    for (int attempt = 0; attempt < 3; ++attempt) {
        const long fd = syscall(SYS_openat2, root_fd, name.c_str(), &how, sizeof how);
        if (fd >= 0) return int(fd);
        // EAGAIN: a rename elsewhere raced the lookup; try again.
        if (errno != EAGAIN) break;
    }
    // Without openat2 (ENOSYS, or a filter's EPERM), and for absolute links
    // into the root (EXDEV), the walk decides.
    if (errno == ENOSYS || errno == EPERM || errno == EXDEV || errno == EAGAIN)
        return open_beneath_walk(root_fd, root_path, relative, flags);
    return -1;
}

std::string descriptor_path(int fd) { return "/proc/self/fd/" + std::to_string(fd); }
