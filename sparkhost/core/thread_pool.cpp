// Worker threads for the processor fork.
#include "sparkhost/core/thread_pool.h"

namespace sparkhost {

namespace {
thread_local int current_task_index = -1;

// Sets this thread's task index for the length of one call.
struct IndexScope {
    explicit IndexScope(int index) : saved(current_task_index) { current_task_index = index; }
    ~IndexScope() { current_task_index = saved; }
    int saved;
};
}  // namespace

ThreadPool::ThreadPool(int workers) {
    if (workers < 1) workers = 1;
    threads_.reserve(workers);
    for (int i = 0; i < workers; ++i) threads_.emplace_back([this, i] { work(i); });
}

ThreadPool::~ThreadPool() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    start_.notify_all();
    for (std::thread &thread : threads_) thread.join();
}

int ThreadPool::current_index() { return current_task_index; }

void ThreadPool::run_inline(int count, const std::function<void(int)> &task) {
    for (int i = 0; i < count; ++i) {
        IndexScope scope(i);
        task(i);
    }
}

void ThreadPool::run(const std::function<void(int)> &task) {
    if (current_task_index >= 0) {
        // Nested fork: this thread is one of the workers, so waiting for the
        // pool would wait for itself.
        run_inline(size(), task);
        return;
    }
    std::lock_guard<std::mutex> one_run(run_mutex_);
    std::unique_lock<std::mutex> lock(mutex_);
    task_ = &task;
    pending_ = size();
    failure_ = nullptr;
    ++generation_;
    start_.notify_all();
    done_.wait(lock, [this] { return pending_ == 0; });
    task_ = nullptr;
    if (failure_) std::rethrow_exception(failure_);
}

void ThreadPool::work(int index) {
    uint64_t seen = 0;
    for (;;) {
        const std::function<void(int)> *task;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            start_.wait(lock, [&] { return stopping_ || generation_ != seen; });
            if (stopping_) return;
            seen = generation_;
            task = task_;
        }
        std::exception_ptr failure;
        try {
            IndexScope scope(index);
            (*task)(index);
        } catch (...) {
            failure = std::current_exception();
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (failure && !failure_) failure_ = failure;
            if (--pending_ == 0) done_.notify_one();
        }
    }
}

}  // namespace sparkhost
