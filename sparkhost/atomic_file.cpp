// Temporary-then-rename output files and the registry of those in flight.
#include "sparkhost/atomic_file.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "sparkhost/error.h"

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

std::string temporary_path_for(const std::string &path) {
    namespace fs = std::filesystem;
    fs::path final_path(path);
    std::string name = "." + final_path.filename().string() + kMarker + std::to_string(getpid()) + "-" +
                       std::to_string(++serial) + final_path.extension().string();
    return (final_path.parent_path() / name).string();
}

bool is_temporary_name(const std::string &file_name) {
    return !file_name.empty() && file_name[0] == '.' && file_name.find(kMarker) != std::string::npos;
}

AtomicFile::AtomicFile(std::string path) : path_(std::move(path)), temporary_(temporary_path_for(path_)) {
    slot_ = claim_slot(temporary_);
}

AtomicFile::~AtomicFile() { abandon(); }

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
