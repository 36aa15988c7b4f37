// Kept states, spaced evenly and thinned to stay within their memory budget.
#include "sparkhost/core/state_cache.h"

namespace sparkhost {

StateCache::StateCache(int every, size_t budget) : base_every_(every), every_(every), budget_(budget) {}

bool StateCache::wants(int frame) const { return frame % every_ == 0 && !states_.count(frame); }

void StateCache::keep(int frame, std::vector<uint8_t> state) {
    if (!wants(frame)) return;
    bytes_ += state.size();
    states_[frame] = std::move(state);
    while (bytes_ > budget_ && states_.size() > 1) {
        every_ *= 2;
        for (auto item = states_.begin(); item != states_.end();) {
            if (item->first % every_ == 0) {
                ++item;
                continue;
            }
            bytes_ -= item->second.size();
            item = states_.erase(item);
        }
    }
}

std::optional<std::pair<int, const std::vector<uint8_t> *>> StateCache::nearest(int frame) const {
    auto after = states_.upper_bound(frame);
    if (after == states_.begin()) return std::nullopt;
    --after;
    return std::make_pair(after->first, &after->second);
}

void StateCache::forget(int frame) {
    auto item = states_.find(frame);
    if (item == states_.end()) return;
    bytes_ -= item->second.size();
    states_.erase(item);
}

void StateCache::clear() {
    states_.clear();
    bytes_ = 0;
    every_ = base_every_;
}

}  // namespace sparkhost
