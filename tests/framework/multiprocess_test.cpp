// Band split and banded execution over the host's processor fork.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "framework/plugin.h"

TEST(BandSplit, EqualBandsRemainderOnTheLastWorkerEmptyBandsWhenRowsAreFew) {
    struct Case {
        long worker, rows, workers, first, last;
    } cases[] = {
        {2, 10, 4, 4, 5}, {3, 10, 4, 6, 9}, {2, 3, 4, 0, -1}, {3, 3, 4, 0, 2},
        {0, 7, 0, 0, 6},  // no workers: one takes every row
    };
    for (const Case &c : cases) {
        RowBand band = band_for_worker(c.worker, c.rows, c.workers);
        EXPECT_TRUE(band.first == c.first && band.last == c.last)
            << "worker " << c.worker << " of " << c.workers << ", rows " << c.rows;
    }
}

namespace {

using Visits = std::vector<std::atomic<int>>;

void visit(Visits &visits, long first, long last) {
    for (long y = first; y <= last; ++y) visits.at(y)++;
}

// The first row not visited exactly once, or -1.
long first_wrong_row(const Visits &visits) {
    for (size_t y = 0; y < visits.size(); ++y)
        if (visits[y] != 1) return long(y);
    return -1;
}

class RowCounter : public PluginQv {
public:
    explicit RowCounter(long rows) : visits(rows) {}
    void mp_count(long first, long last) { visit(visits, first, last); }
    Visits visits;
};

void count_rows(void *arg, int first, int last) { visit(*static_cast<Visits *>(arg), first, last); }

}  // namespace

TEST(ProcessorCount, EffectAndLibraryBandsVisitEveryRowOnce) {
    const int32_t saved = frame_context.processors;
    for (int processors : {1, 3, 8, 0})
        for (long rows : {1L, 10L}) {
            frame_context.processors = processors;
            RowCounter counter(rows);
            counter.MultiProcess(&RowCounter::mp_count, rows);
            EXPECT_EQ(first_wrong_row(counter.visits), -1) << rows << " rows on " << processors << " processors";
        }
    frame_context.processors = 3;
    RowCounter effect(0);
    Visits visits(11);
    lib_mp_exec(&effect, count_rows, 11, &visits);
    EXPECT_EQ(first_wrong_row(visits), -1);
    frame_context.processors = saved;
}
