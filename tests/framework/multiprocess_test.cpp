// Band split and banded execution over the host's processor fork.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "framework/plugin.h"
#include "host/globals.h"

TEST(BandSplit, EqualBandsRemainderOnTheLastWorkerEmptyBandsWhenRowsAreFew) {
    struct Case {
        long worker, rows, workers, first, last;
    } cases[] = {
        {0, 10, 4, 0, 1}, {1, 10, 4, 2, 3}, {2, 10, 4, 4, 5}, {3, 10, 4, 6, 9},
        {0, 3, 4, 0, -1}, {1, 3, 4, 0, -1}, {2, 3, 4, 0, -1}, {3, 3, 4, 0, 2},
        {0, 7, 1, 0, 6},  {0, 7, 0, 0, 6},  {0, 7, -3, 0, 6},  // one or no workers take every row
    };
    for (const Case &c : cases) {
        RowBand band = band_for_worker(c.worker, c.rows, c.workers);
        EXPECT_EQ(band.first, c.first) << "worker " << c.worker << " of " << c.workers << ", rows " << c.rows;
        EXPECT_EQ(band.last, c.last) << "worker " << c.worker << " of " << c.workers << ", rows " << c.rows;
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

class RecordingImage : public ImageQv {
public:
    explicit RecordingImage(long rows) : ImageQv(2, rows, 1.0f, nullptr, nullptr), visits(rows) {}
    void mp_mark(long first, long last) { visit(visits, first, last); }
    Visits visits;
};

void count_rows(void *arg, int first, int last) { visit(*static_cast<Visits *>(arg), first, last); }

class ProcessorCount : public ::testing::Test {
protected:
    void TearDown() override { DLnumProc = saved; }
    int32_t saved = DLnumProc;
};

}  // namespace

TEST_F(ProcessorCount, EffectMultiProcessVisitsEveryRowOnce) {
    for (int processors : {1, 2, 3, 4, 8, 0, -1})
        for (long rows : {1L, 3L, 10L, 1080L}) {
            DLnumProc = processors;
            RowCounter counter(rows);
            counter.MultiProcess(&RowCounter::mp_count, rows);
            EXPECT_EQ(first_wrong_row(counter.visits), -1) << rows << " rows on " << processors << " processors";
        }
}

TEST_F(ProcessorCount, ImageMembersAndLibraryFunctionsRunInBandsVisitingEveryRowOnce) {
    DLnumProc = 4;
    RecordingImage image(10);
    image.MultiProcess(static_cast<void (ImageQv::*)(long, long)>(&RecordingImage::mp_mark), 10);
    EXPECT_EQ(first_wrong_row(image.visits), -1);

    DLnumProc = 3;
    RowCounter effect(0);
    Visits visits(11);
    lib_mp_exec(&effect, count_rows, 11, &visits);
    EXPECT_EQ(first_wrong_row(visits), -1);
    EXPECT_EQ(effect.library_mp_arg, &visits);
    EXPECT_EQ(lib_abort_render(&effect), 0);
}
