// Encoder output with every write, and the close, checked.
#include "sparkhost/files/imageio/checked_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace sparkhost {

CheckedOutput::CheckedOutput(const std::string &path) : IOProxy(path, Write) {
    fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd_ < 0) fail(errno);
}

CheckedOutput::~CheckedOutput() {
    if (fd_ >= 0) ::close(fd_);
}

void CheckedOutput::fail(int error) {
    if (failure_.empty()) failure_ = std::strerror(error);
}

size_t CheckedOutput::write(const void *data, size_t size) {
    const size_t written = pwrite(data, size, m_pos);
    m_pos += int64_t(written);
    return written;
}

size_t CheckedOutput::pwrite(const void *data, size_t size, int64_t offset) {
    // Once a write has failed the file is lost: the rest is only counted.
    if (failure_.empty()) {
        const char *bytes = static_cast<const char *>(data);
        for (size_t done = 0; done < size;) {
            const ssize_t wrote = ::pwrite(fd_, bytes + done, size - done, offset + int64_t(done));
            if (wrote < 0 && errno == EINTR) continue;
            if (wrote <= 0) {
                fail(wrote < 0 ? errno : ENOSPC);
                break;
            }
            done += size_t(wrote);
        }
    }
    end_ = std::max(end_, offset + int64_t(size));
    return size;
}

size_t CheckedOutput::read(void *data, size_t size) {
    const size_t got = pread(data, size, m_pos);
    m_pos += int64_t(got);
    return got;
}

size_t CheckedOutput::pread(void *data, size_t size, int64_t offset) {
    if (!failure_.empty()) return 0;
    const ssize_t got = ::pread(fd_, data, size, offset);
    return got < 0 ? 0 : size_t(got);
}

std::string CheckedOutput::finish() {
    if (fd_ >= 0) {
        if (::close(fd_) != 0) fail(errno);
        fd_ = -1;
    }
    m_mode = Closed;
    return failure_;
}

}  // namespace sparkhost
