// Band split and banded execution over the host's processor fork.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "framework/plugin.h"
#include "host/globals.h"

TEST(BandSplit, EqualBandsWithTheRemainderOnTheLastWorker) {
    const long expected[4][2] = {{0, 1}, {2, 3}, {4, 5}, {6, 9}};
    for (long i = 0; i < 4; ++i) {
        RowBand band = band_for_worker(i, 10, 4);
        EXPECT_EQ(band.first, expected[i][0]) << "worker " << i;
        EXPECT_EQ(band.last, expected[i][1]) << "worker " << i;
    }
}

TEST(BandSplit, FewerRowsThanWorkersLeavesEarlyBandsEmpty) {
    for (long i = 0; i < 3; ++i) {
        RowBand band = band_for_worker(i, 3, 4);
        EXPECT_EQ(band.first, 0);
        EXPECT_EQ(band.last, -1);
    }
    RowBand last = band_for_worker(3, 3, 4);
    EXPECT_EQ(last.first, 0);
    EXPECT_EQ(last.last, 2);
}

TEST(BandSplit, OneOrNoWorkersTakeEveryRow) {
    for (long workers : {1L, 0L, -3L}) {
        RowBand band = band_for_worker(0, 7, workers);
        EXPECT_EQ(band.first, 0);
        EXPECT_EQ(band.last, 6);
    }
}

namespace {

// Counts how often each row is visited.
class RowCounter : public PluginQv {
public:
    explicit RowCounter(long rows) : visits(rows) {}
    void mp_count(long first, long last) {
        for (long y = first; y <= last; ++y) visits.at(y)++;
    }
    std::vector<std::atomic<int>> visits;
};

class ProcessorCount : public ::testing::Test {
protected:
    void TearDown() override { DLnumProc = saved; }
    int32_t saved = DLnumProc;
};

}  // namespace

TEST_F(ProcessorCount, EffectMultiProcessVisitsEveryRowOnce) {
    for (int processors : {1, 2, 3, 4, 8, 0, -1}) {
        for (long rows : {1L, 3L, 10L, 1080L}) {
            DLnumProc = processors;
            RowCounter counter(rows);
            counter.MultiProcess(&RowCounter::mp_count, rows);
            for (long y = 0; y < rows; ++y)
                ASSERT_EQ(counter.visits[y], 1)
                    << "row " << y << " of " << rows << " on " << processors << " processors";
        }
    }
}

namespace {

// An image that records which rows its banded member was handed.
class RecordingImage : public ImageQv {
public:
    explicit RecordingImage(long rows) : ImageQv(2, rows, 1.0f, nullptr, nullptr), visits(rows) {}
    void mp_mark(long first, long last) {
        for (long y = first; y <= last; ++y) visits.at(y)++;
    }
    std::vector<std::atomic<int>> visits;
};

void count_rows(void *arg, int first, int last) {
    auto *visits = static_cast<std::vector<std::atomic<int>> *>(arg);
    for (int y = first; y <= last; ++y) visits->at(y)++;
}

}  // namespace

TEST_F(ProcessorCount, ImageMultiProcessVisitsEveryRowOnce) {
    DLnumProc = 4;
    RecordingImage image(10);
    image.MultiProcess(static_cast<void (ImageQv::*)(long, long)>(&RecordingImage::mp_mark), 10);
    for (long y = 0; y < 10; ++y) EXPECT_EQ(image.visits[y], 1) << "row " << y;
}

TEST_F(ProcessorCount, LibraryFunctionRunsInBandsWithItsArgument) {
    DLnumProc = 3;
    RowCounter effect(0);
    std::vector<std::atomic<int>> visits(11);
    lib_mp_exec(&effect, count_rows, 11, &visits);
    for (long y = 0; y < 11; ++y) EXPECT_EQ(visits[y], 1) << "row " << y;
    EXPECT_EQ(effect.library_mp_arg, &visits);
    EXPECT_EQ(lib_abort_render(&effect), 0);
}
