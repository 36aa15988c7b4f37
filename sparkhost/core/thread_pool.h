// A fixed set of worker threads that run one task on every worker at once:
// the processors behind sparkMpFork.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace sparkhost {

class ThreadPool {
public:
    explicit ThreadPool(int workers);
    ~ThreadPool();
    ThreadPool(const ThreadPool &) = delete;
    ThreadPool &operator=(const ThreadPool &) = delete;

    int size() const { return int(threads_.size()); }

    // Runs task(index) once on each worker, index 0..size()-1, and returns
    // when every worker has finished. Called from inside a worker of any
    // pool, it runs the indices one after another on the calling thread
    // instead of waiting on itself. Rethrows the first exception a task threw.
    void run(const std::function<void(int)> &task);

    // Runs task(0..count-1) one after another on the calling thread, each
    // seeing its own index as current_index().
    static void run_inline(int count, const std::function<void(int)> &task);

    // Index of the task running on this thread, -1 outside any task.
    static int current_index();

private:
    void work(int index);

    std::vector<std::thread> threads_;
    std::mutex run_mutex_;  // one run at a time
    std::mutex mutex_;
    std::condition_variable start_;
    std::condition_variable done_;
    const std::function<void(int)> *task_ = nullptr;
    uint64_t generation_ = 0;
    int pending_ = 0;
    bool stopping_ = false;
    std::exception_ptr failure_;
};

}  // namespace sparkhost
