// The checkpoint file: a fixed header, then the plug-in's state as it gave it.
//
//     0  "FZCHECK\0"   8 bytes
//     8  version       u32, little-endian (1)
//    12  frame         u32
//    16  key           u64, the shot and its inputs up to the frame
//    24  state size    u64
//    32  checksum      u64, FNV-1a of bytes 8..31 and the state
//    40  state
#include "render/checkpoints.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/regular_file.h"
#include "sparkhost/core/host.h"
#include "sparkhost/files/setup_file.h"

namespace fs = std::filesystem;

namespace {

constexpr char kMagic[8] = {'F', 'Z', 'C', 'H', 'E', 'C', 'K', '\0'};
constexpr uint32_t kVersion = 1;
constexpr size_t kHeaderBytes = 40;
// More than the largest state the effect can make (about 13 million
// particles, 950 MB).
constexpr size_t kLargestState = size_t(1) << 30;

void put(std::vector<uint8_t> &out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(uint8_t(value >> (8 * i)));
}

uint64_t get(const uint8_t *at, int bytes) {
    uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value |= uint64_t(at[i]) << (8 * i);
    return value;
}

uint64_t checksum(const uint8_t *header, const uint8_t *state, size_t size) {
    return fnv1a(state, size, fnv1a(header + 8, 24));
}

std::string hex(uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016" PRIx64, value);
    return text;
}

}  // namespace

uint64_t fnv1a(const void *data, size_t size, uint64_t hash) {
    const auto *bytes = static_cast<const uint8_t *>(data);
    for (size_t i = 0; i < size; ++i) {
        hash ^= bytes[i];
        hash *= 0x100000001b3ull;
    }
    return hash;
}

CheckpointStore::CheckpointStore(std::string directory, uint64_t shot,
                                 std::function<void(const std::string &)> notes)
    : directory_(std::move(directory)), shot_(shot), notes_(std::move(notes)) {}

std::string CheckpointStore::path(int frame) const {
    char number[16];
    std::snprintf(number, sizeof number, "%06d", frame);
    return (fs::path(directory_) / ("fizzle-" + hex(shot_) + "." + number + ".state")).string();
}

bool CheckpointStore::has(int frame) const {
    std::error_code error;
    return fs::is_regular_file(path(frame), error);
}

std::optional<Checkpoint> CheckpointStore::read(const std::string &file, int frame, uint64_t key) {
    auto ignored = [&](const std::string &why) {
        notes_("checkpoint '" + file + "' ignored: " + why);
        return std::nullopt;
    };
    // Only a regular file, and no larger than a state can be: a FIFO or a
    // device named like a checkpoint would hang the run or fill its memory.
    std::string content;
    try {
        content = sparkhost::read_regular_file(file, kHeaderBytes + kLargestState);
    } catch (const sparkhost::Error &error) {
        return ignored(error.what());
    }
    const auto *bytes = reinterpret_cast<const uint8_t *>(content.data());
    if (content.size() < kHeaderBytes || std::memcmp(bytes, kMagic, 8) != 0)
        return ignored("not a checkpoint file");
    const uint64_t version = get(&bytes[8], 4);
    if (version > kVersion) return ignored("made by a newer version (format " + std::to_string(version) + ")");
    if (version != kVersion) return ignored("format " + std::to_string(version) + " is not understood");
    const uint64_t size = get(&bytes[24], 8);
    if (size != content.size() - kHeaderBytes) return ignored("truncated or padded");  // no sum to wrap
    if (checksum(bytes, bytes + kHeaderBytes, size) != get(&bytes[32], 8))
        return ignored("bad checksum");
    if (int(get(&bytes[12], 4)) != frame || get(&bytes[16], 8) != key)
        return ignored("made for another setup or other inputs");
    return Checkpoint{frame, std::vector<uint8_t>(bytes + kHeaderBytes, bytes + content.size())};
}

std::optional<int> CheckpointStore::restore(int frame, const std::function<uint64_t(int)> &key_at,
                                            const std::function<bool(const std::vector<uint8_t> &)> &accept) {
    const std::string prefix = "fizzle-" + hex(shot_) + ".";
    std::vector<int> frames;
    std::error_code error;
    for (fs::directory_iterator it(directory_, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.size() != prefix.size() + 12 || name.compare(0, prefix.size(), prefix) != 0 ||
            name.compare(prefix.size() + 6, 6, ".state") != 0)
            continue;
        const std::string digits = name.substr(prefix.size(), 6);
        if (!std::all_of(digits.begin(), digits.end(), ::isdigit)) continue;
        const int number = std::stoi(digits);
        if (number >= 1 && number <= frame) frames.push_back(number);
    }
    std::sort(frames.rbegin(), frames.rend());
    for (int number : frames) {
        std::optional<Checkpoint> checkpoint = read(path(number), number, key_at(number));
        if (!checkpoint) continue;
        if (accept(checkpoint->state)) return number;
        notes_("checkpoint '" + path(number) + "' ignored: the plug-in refused its state");
    }
    return std::nullopt;
}

bool CheckpointStore::save(int frame, uint64_t key, const std::vector<uint8_t> &state) {
    std::vector<uint8_t> bytes(kMagic, kMagic + 8);
    put(bytes, kVersion, 4);
    put(bytes, uint32_t(frame), 4);
    put(bytes, key, 8);
    put(bytes, state.size(), 8);
    put(bytes, checksum(bytes.data(), state.data(), state.size()), 8);
    bytes.insert(bytes.end(), state.begin(), state.end());

    const std::string final_path = path(frame);
    std::error_code error;
    const fs::file_status status = fs::status(final_path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        // Something else holds the name: that checkpoint is done without,
        // and the others are still saved.
        notes_("checkpoint '" + final_path + "' not saved: the name is taken by something that is not a file");
        return true;
    }
    // The temporary's name carries the machine and the process: farm nodes
    // may share the folder.
    try {
        sparkhost::AtomicFile file(final_path);
        file.write(bytes.data(), bytes.size());
        file.commit();
    } catch (const sparkhost::Error &failure) {
        notes_(std::string("checkpoint not saved: ") + failure.what());
        return false;
    }
    return true;
}

uint64_t add_file(uint64_t hash, const std::string &path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return fnv1a(path.data(), path.size(), hash) ^ 1;
    const int64_t fields[3] = {int64_t(info.st_size), int64_t(info.st_mtim.tv_sec), int64_t(info.st_mtim.tv_nsec)};
    return fnv1a(fields, sizeof fields, fnv1a(path.data(), path.size(), hash));
}

uint64_t add_text(uint64_t hash, const std::string &text) {
    const uint64_t size = text.size();
    return fnv1a(text.data(), text.size(), fnv1a(&size, sizeof size, hash));
}

std::string file_bytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::string setup_text(sparkhost::Host &host) {
    std::string pattern = (fs::temp_directory_path() / "fizzle-key-XXXXXX").string();
    const int fd = mkstemp(pattern.data());
    if (fd < 0) throw sparkhost::Error(std::string("cannot make a temporary file for the shot's key: ") + std::strerror(errno));
    close(fd);
    std::string text;
    try {
        sparkhost::save_setup(pattern, host.controls());
        text = file_bytes(pattern);
    } catch (...) {
        fs::remove(pattern);
        throw;
    }
    fs::remove(pattern);
    return text;
}
