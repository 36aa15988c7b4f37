// An effect's table of uniform numbers for one frame: the successive
// ran1fQv draws from a seed, made only as far as the frame reads them.
//
// A frame reads a few thousand of its 262,144 entries, and the draws can
// only be made one after another, so making them all cost more than a
// millisecond on the host's thread for every frame and every pre-roll step.
// Entries are made on first read, in order, under a lock, so banded workers
// reading the same table see the very numbers a whole fill would give.
//
//     RandomTableQv table;
//     long seed = -785;
//     table.Refill(&seed);          // seed: as after 262,144 draws
//     float r = table.Entry(12);    // the 13th draw
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "framework/minimal_standard.h"

class RandomTableQv {
public:
    static constexpr int32_t kSize = 262144;

    RandomTableQv();

    // Starts the table over as ran1fQvFill(seed, table, kSize) would fill it,
    // and leaves *seed where that leaves it. A seed above zero continues this
    // table's own sequence after its last entry. Not while banded work reads it.
    void Refill(long *seed);

    // Entry `index` (0 .. kSize - 1), made now if it is not yet. Any thread.
    float Entry(int32_t index) const {
        if (index >= made_.load(std::memory_order_acquire)) MakeUpTo(index + 1);
        return values_[size_t(index)];
    }

    // Every entry made, for reading or for setting by hand (tests).
    float *Whole();
    int32_t Made() const { return made_.load(std::memory_order_acquire); }

private:
    void MakeUpTo(int32_t count) const;

    std::unique_ptr<float[]> values_;
    mutable std::mutex making_;
    mutable std::atomic<int32_t> made_{0};
    mutable random_detail::ShuffledMinimalStandard stream_;
    mutable long seed_ = 0;
};
