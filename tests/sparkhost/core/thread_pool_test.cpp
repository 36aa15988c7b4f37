// The processor fork: every worker index runs exactly once, all before the
// fork returns, each on its own thread, and sparkMpInfo names the index.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/core/host.h"

using namespace sparkhost;

namespace {

struct ForkLog {
    std::mutex mutex;
    std::vector<int> runs;
    std::set<std::thread::id> threads;
};

// A plug-in style worker: identifies itself through sparkMpInfo only.
void logging_worker(void *log_pointer, void *, void *, void *) {
    auto *log = static_cast<ForkLog *>(log_pointer);
    unsigned int position = 99, stride = 0;
    sparkMpInfo(&position, &stride);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // let the others start
    std::lock_guard<std::mutex> lock(log->mutex);
    ASSERT_NE(stride, 0u);
    ASSERT_LT(position / stride, log->runs.size());
    ++log->runs[position / stride];
    log->threads.insert(std::this_thread::get_id());
}

}  // namespace

TEST(ProcessorFork, RunsEveryIndexOnceOnItsOwnThreadBeforeReturning) {
    for (int processors : {1, 16}) {
        Settings settings;
        settings.processors = processors;
        Host host(settings);
        host.make_current();
        ForkLog log;
        log.runs.assign(processors, 0);
        EXPECT_EQ(sparkMpFork(logging_worker, 4, &log, nullptr, nullptr, reinterpret_cast<void *>(intptr_t(1))), 1);
        EXPECT_EQ(log.runs, std::vector<int>(processors, 1));
        EXPECT_EQ(int(log.threads.size()), processors);
        EXPECT_EQ(log.threads.count(std::this_thread::get_id()), 0u);
    }
}
