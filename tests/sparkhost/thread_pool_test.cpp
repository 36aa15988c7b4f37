// The processor fork: every worker index runs exactly once, all before the
// fork returns, each on its own thread, and sparkMpInfo names the index.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/host.h"
#include "sparkhost/thread_pool.h"

using namespace sparkhost;

namespace {

// What one fork saw: how often each index ran, and on which threads.
struct ForkLog {
    std::mutex mutex;
    std::vector<int> runs;
    std::set<std::thread::id> threads;
    explicit ForkLog(int workers) : runs(workers, 0) {}
};

// A plug-in style worker: identifies itself through sparkMpInfo only.
void logging_worker(void *log_pointer, void *, void *, void *) {
    auto *log = static_cast<ForkLog *>(log_pointer);
    unsigned int position = 99, stride = 0;
    sparkMpInfo(&position, &stride);
    ASSERT_NE(stride, 0u);
    unsigned int index = position / stride;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // let the others start
    std::lock_guard<std::mutex> lock(log->mutex);
    ASSERT_LT(index, log->runs.size());
    ++log->runs[index];
    log->threads.insert(std::this_thread::get_id());
}

}  // namespace

class ProcessorFork : public ::testing::TestWithParam<int> {};

TEST_P(ProcessorFork, RunsEveryIndexOnceOnItsOwnThreadBeforeReturning) {
    int processors = GetParam();
    Settings settings;
    settings.processors = processors;
    Host host(settings);
    host.make_current();
    for (int round = 0; round < 3; ++round) {
        ForkLog log(processors);
        EXPECT_EQ(sparkMpFork(logging_worker, 4, &log, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(1))), 1);
        EXPECT_EQ(log.runs, std::vector<int>(processors, 1));
        EXPECT_EQ(int(log.threads.size()), processors);
        EXPECT_EQ(log.threads.count(std::this_thread::get_id()), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, ProcessorFork, ::testing::Values(1, 2, 16));

TEST(ProcessorFork, WithoutAHostRunsTheCountGivenAsFourthArgument) {
    { Host gone; }  // leaves no current host behind
    ASSERT_EQ(Host::current(), nullptr);
    ForkLog log(3);
    sparkMpFork(logging_worker, 4, &log, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(3)));
    EXPECT_EQ(log.runs, std::vector<int>(3, 1));
    SparkMemBufStruct record{};
    EXPECT_EQ(sparkMemGetBuffer(2, &record), 0);
}

TEST(ThreadPool, NestedRunFromAWorkerRunsInlineInsteadOfDeadlocking) {
    ThreadPool pool(2);
    std::atomic<int> inner{0};
    pool.run([&](int outer) {
        pool.run([&](int) { ++inner; });
        EXPECT_EQ(ThreadPool::current_index(), outer);  // restored after the nested run
    });
    EXPECT_EQ(inner.load(), 4);
    EXPECT_EQ(ThreadPool::current_index(), -1);
}

TEST(ThreadPool, ExceptionInATaskReachesTheCaller) {
    ThreadPool pool(3);
    EXPECT_THROW(pool.run([](int index) {
        if (index == 1) throw std::runtime_error("worker failed");
    }), std::runtime_error);
    std::atomic<int> runs{0};
    pool.run([&](int) { ++runs; });  // the pool still works afterwards
    EXPECT_EQ(runs.load(), 3);
}
