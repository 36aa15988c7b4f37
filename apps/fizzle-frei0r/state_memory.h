// The plug-in's state after some frames, kept in memory, so that a host that
// asks for an earlier frame is answered from the nearest one instead of from
// the first frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

class StateMemory {
public:
    // One state every `every` frames while the whole stays under `budget`
    // bytes; past it, every other one is let go and the spacing doubles.
    // Simulating a frame costs a few per cent of drawing one, so a request
    // between kept states is answered quickly enough.
    explicit StateMemory(int every = 10, size_t budget = size_t(256) << 20);

    bool wants(int frame) const;
    void keep(int frame, std::vector<uint8_t> state);
    // The kept state after the latest frame at or before `frame`.
    std::optional<std::pair<int, const std::vector<uint8_t> *>> nearest(int frame) const;

    size_t bytes() const { return bytes_; }
    int every() const { return every_; }

private:
    int every_;
    size_t budget_;
    size_t bytes_ = 0;
    std::map<int, std::vector<uint8_t>> states_;
};
