// Temporary-then-rename output files and the registry of those in flight.
#include "sparkhost/files/atomic_file.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "sparkhost/core/error.h"

namespace sparkhost {

namespace {

constexpr const char *kMarker = ".partial-";

// Fixed storage so that the signal handler reads it without allocating or
// locking: a slot's path is complete before its state says Busy.
enum SlotState : int { Free, Claimed, Busy };
constexpr int kSlots = 64;
struct Slot {
    std::atomic<int> state{Free};
    char path[PATH_MAX];
};
Slot slots[kSlots];

std::atomic<unsigned long> serial{0};

int claim_slot(const std::string &path) {
    if (path.size() >= PATH_MAX) throw Error("cannot write '" + path + "': the path is too long");
    for (int i = 0; i < kSlots; ++i) {
        int expected = Free;
        if (!slots[i].state.compare_exchange_strong(expected, Claimed)) continue;
        std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
        slots[i].state.store(Busy);
        return i;
    }
    throw Error("cannot write '" + path + "': too many files are being written at once");
}

}  // namespace

namespace {

// This machine's name as temporaries carry it: dots would be taken for the
// extension, so they become underscores.
std::string machine_tag() {
    char host[256] = "host";
    if (gethostname(host, sizeof host - 1) != 0) std::strcpy(host, "host");
    host[sizeof host - 1] = '\0';
    std::string tag = host;
    std::replace(tag.begin(), tag.end(), '.', '_');
    std::replace(tag.begin(), tag.end(), '/', '_');
    return tag;
}

// Cut to at most `bytes`, not inside a UTF-8 character.
std::string cut(const std::string &text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
    return text.substr(0, bytes);
}

}  // namespace

// ".<name>.partial-<pid>-<serial>@<machine><extension>"
std::string temporary_path_for(const std::string &path) {
    namespace fs = std::filesystem;
    fs::path final_path(path);
    const std::string extension = final_path.extension().string();
    const std::string tail = std::string(kMarker) + std::to_string(getpid()) + "-" + std::to_string(++serial) +
                             "@" + machine_tag() + extension;
    const std::size_t room = NAME_MAX > 1 + tail.size() ? NAME_MAX - 1 - tail.size() : 0;
    const std::string name = "." + cut(final_path.filename().string(), room) + tail;
    return (final_path.parent_path() / name).string();
}

bool is_temporary_name(const std::string &file_name) {
    return !file_name.empty() && file_name[0] == '.' && file_name.find(kMarker) != std::string::npos;
}

int remove_stale_temporaries(const std::string &directory) {
    namespace fs = std::filesystem;
    const std::string machine = machine_tag();
    int removed = 0;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (!is_temporary_name(name)) continue;
        // The last marker: the final name may hold the marker itself.
        const char *at = name.c_str() + name.rfind(kMarker) + std::strlen(kMarker);
        char *rest = nullptr;
        errno = 0;
        const long pid = std::strtol(at, &rest, 10);
        if (errno != 0 || rest == at || *rest != '-' || pid <= 0) continue;
        const std::string after = rest + 1;
        const std::size_t sign = after.find('@');
        if (sign == std::string::npos || after.find_first_not_of("0123456789") != sign) continue;
        const std::string owner = after.substr(sign + 1, after.find('.', sign) - sign - 1);
        if (owner != machine || pid == getpid()) continue;
        if (kill(pid_t(pid), 0) == 0 || errno != ESRCH) continue;  // still running, or not ours to judge
        std::error_code ignored;
        if (fs::is_regular_file(it->symlink_status(ignored)) && fs::remove(it->path(), ignored)) ++removed;
    }
    return removed;
}

AtomicFile::AtomicFile(std::string path) : path_(std::move(path)), temporary_(temporary_path_for(path_)) {
    slot_ = claim_slot(temporary_);
}

AtomicFile::~AtomicFile() { abandon(); }

void AtomicFile::write(const void *data, std::size_t size) {
    const auto failed = [&](int error) {
        abandon();
        throw Error("cannot write '" + path_ + "': " + std::strerror(error));
    };
    if (slot_ < 0) throw Error("cannot write '" + path_ + "': the file was already finished");
    const int fd = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) failed(errno);
    const char *bytes = static_cast<const char *>(data);
    for (std::size_t done = 0; done < size;) {
        const ssize_t wrote = ::write(fd, bytes + done, size - done);
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote <= 0) {
            const int error = wrote < 0 ? errno : ENOSPC;
            ::close(fd);
            failed(error);
        }
        done += std::size_t(wrote);
    }
    if (::close(fd) != 0) failed(errno);
}

void AtomicFile::commit() {
    if (slot_ < 0) throw Error("cannot write '" + path_ + "': the file was already finished");
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        const std::string problem = std::strerror(errno);
        abandon();
        throw Error("cannot write '" + path_ + "': " + problem);
    }
    release();
}

void AtomicFile::abandon() {
    if (slot_ < 0) return;
    std::remove(temporary_.c_str());
    release();
}

void AtomicFile::release() {
    slots[slot_].state.store(Free);
    slot_ = -1;
}

void remove_temporaries_in_flight() {
    for (Slot &slot : slots)
        if (slot.state.load() == Busy) unlink(slot.path);
}

int temporaries_in_flight() {
    int count = 0;
    for (const Slot &slot : slots) count += slot.state.load() == Busy;
    return count;
}

}  // namespace sparkhost
