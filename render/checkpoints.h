// Checkpoints of a shot's simulation in a cache directory: the plug-in's
// state after a frame, in a small versioned, checksummed file named after
// the shot's key, so a later run can start from the nearest one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sparkhost {
class Host;
}

struct Checkpoint {
    int frame = 0;  // the state is the one after this frame
    std::vector<uint8_t> state;
};

class CheckpointStore {
public:
    // shot: the key of everything but the inputs; notes: one-line remarks
    // about checkpoints that were ignored or could not be written.
    CheckpointStore(std::string directory, uint64_t shot, std::function<void(const std::string &)> notes);

    // The newest valid checkpoint at or before `frame` whose key is
    // key_at(its frame); unusable files on the way are noted and skipped.
    // accept: whether the plug-in took the state.
    std::optional<int> restore(int frame, const std::function<uint64_t(int)> &key_at,
                               const std::function<bool(const std::vector<uint8_t> &)> &accept);
    bool has(int frame) const;
    // Written under a temporary name, then renamed: never half a file.
    // False (with a note) when it could not be written.
    bool save(int frame, uint64_t key, const std::vector<uint8_t> &state);
    std::string path(int frame) const;

private:
    std::optional<Checkpoint> read(const std::string &file, int frame, uint64_t key);

    std::string directory_;
    uint64_t shot_;
    std::function<void(const std::string &)> notes_;
};

// 64-bit FNV-1a, the hash of the keys and the checksum of the files.
uint64_t fnv1a(const void *data, size_t size, uint64_t hash = 0xcbf29ce484222325ull);

// Pieces of a shot's key, shared by every program that keeps checkpoints.
// The text with its length, so that two texts cannot run into each other.
uint64_t add_text(uint64_t hash, const std::string &text);
// A file by its size and modification time: a changed input makes a
// different key without reading every picture.
uint64_t add_file(uint64_t hash, const std::string &path);
// A whole file's bytes (empty when it cannot be read).
std::string file_bytes(const std::string &path);
// The setup in force as a setup file would hold it: values and curves.
std::string setup_text(sparkhost::Host &host);
