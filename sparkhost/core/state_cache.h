// The plug-in's state after some of the frames simulated since the last
// change, kept in memory so that a jump (a viewer's, a host asking for an
// earlier frame) restarts from the nearest one instead of from the first frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace sparkhost {

class StateCache {
public:
    // Keeps one state every `every` frames while the whole stays under
    // `budget` bytes; past it, every other one is let go and the spacing doubles.
    explicit StateCache(int every = 10, size_t budget = size_t(256) << 20);

    // Whether the state after this frame is one to keep (and is not kept yet).
    bool wants(int frame) const;
    void keep(int frame, std::vector<uint8_t> state);
    // The kept state after the latest frame at or before `frame`.
    std::optional<std::pair<int, const std::vector<uint8_t> *>> nearest(int frame) const;
    void forget(int frame);
    void clear();

    int every() const { return every_; }
    size_t bytes() const { return bytes_; }
    size_t size() const { return states_.size(); }

private:
    int base_every_;
    int every_;
    size_t budget_;
    size_t bytes_ = 0;
    std::map<int, std::vector<uint8_t>> states_;
};

}  // namespace sparkhost
