// Kept states, spaced evenly and thinned to stay within their budget.
#include "state_memory.h"

StateMemory::StateMemory(int every, size_t budget) : every_(every < 1 ? 1 : every), budget_(budget) {}

bool StateMemory::wants(int frame) const { return frame % every_ == 0 && !states_.count(frame); }

void StateMemory::keep(int frame, std::vector<uint8_t> state) {
    if (!wants(frame)) return;
    bytes_ += state.size();
    states_[frame] = std::move(state);
    while (bytes_ > budget_ && states_.size() > 1) {
        every_ *= 2;
        for (auto item = states_.begin(); item != states_.end();) {
            // The state before frame 1 is the one everything else grows from.
            if (item->first == 0 || item->first % every_ == 0) {
                ++item;
                continue;
            }
            bytes_ -= item->second.size();
            item = states_.erase(item);
        }
    }
}

std::optional<std::pair<int, const std::vector<uint8_t> *>> StateMemory::nearest(int frame) const {
    auto after = states_.upper_bound(frame);
    if (after == states_.begin()) return std::nullopt;
    --after;
    return std::make_pair(after->first, &after->second);
}
