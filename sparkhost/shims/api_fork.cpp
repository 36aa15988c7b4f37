// Host functions: the processor fork and a worker's identity.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>

#include "spark/spark.h"
#include "sparkhost/core/host.h"
#include "sparkhost/core/thread_pool.h"

using sparkhost::Host;
using sparkhost::ThreadPool;

namespace {

// Without a host, code linked against the library (unit tests of the
// framework) still forks: over as many workers as its fourth argument, the
// count the framework passes, on a pool kept for the next fork.
int fork_without_host(SparkMpWorker worker, void *a0, void *a1, void *a2, void *a3) {
    static std::mutex mutex;
    static std::unique_ptr<ThreadPool> pool;
    int count = int(std::clamp<intptr_t>(reinterpret_cast<intptr_t>(a3), 1, 256));
    if (ThreadPool::current_index() >= 0) {
        // Forked from inside a worker: the pool is busy with the outer fork.
        ThreadPool::run_inline(count, [&](int) { worker(a0, a1, a2, a3); });
        return 1;
    }
    std::lock_guard<std::mutex> lock(mutex);
    if (!pool || pool->size() != count) pool = std::make_unique<ThreadPool>(count);
    pool->run([&](int) { worker(a0, a1, a2, a3); });
    return 1;
}

}  // namespace

extern "C" {

int sparkMpFork(SparkMpWorker worker, int, void *a0, void *a1, void *a2, void *a3) {
    if (!worker) return 0;
    if (Host *host = Host::current()) return host->fork(worker, a0, a1, a2, a3);
    return fork_without_host(worker, a0, a1, a2, a3);
}

void sparkMpInfo(unsigned int *position, unsigned int *stride) {
    int index = ThreadPool::current_index();
    if (position) *position = unsigned(index < 0 ? 0 : index);
    if (stride) *stride = 1;
}

}  // extern "C"
