#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace TESK_KIVO2D {

// The threads of one batch. The one that made the pool is one of them: with a single thread everything runs
// in the caller.
class WorkerPool {
public:
    // Fewer threads when the system refuses more; at least the caller's.
    explicit WorkerPool(int numThreads);
    // Joins the threads.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // Number of threads, the caller's included.
    int size() const { return static_cast<int>(vThreads.size()) + 1; }

    // Does a task, in the thread of this number below size(); the caller's is 0.
    using Task = std::function<void(std::size_t task, int thread)>;
    // Does the tasks 0 to numTasks - 1, each once; threads take them in this order as they become free. The
    // caller takes its share, and calls whileWaiting, if given, every few milliseconds while only others
    // still work. Returns when all are done.
    //
    // A task that throws ends the run: tasks not begun are left out, the others are waited for, and the
    // exception is thrown in the caller, of several that of the lowest task. What whileWaiting throws ends it
    // in the same way. Not from within a task.
    void run(std::size_t numTasks, const Task& task, const std::function<void()>& whileWaiting = {});
    // True when a task of this run has thrown: long ones ask now and then, and return early.
    bool hasFailed() const { return bFailed.load(std::memory_order_relaxed); }

private:
    void serve(int thread);
    void doTasks(int thread);
    void fail(std::size_t task);
    void await(const std::function<void()>& whileWaiting);

    std::mutex mutex;
    std::condition_variable wakeWorkers, wakeCaller;
    // Guarded by the mutex.
    std::size_t numInvited = 0; // threads that may still join the run; the run does not wait for these
    std::size_t numBusy = 0;    // threads that have joined it
    bool bStop = false;
    std::exception_ptr pFailure;
    std::size_t failedTask = 0;
    // Of the run; written before any thread is invited.
    const Task* pTask = nullptr;
    std::size_t numTasks = 0;
    // All threads count on this one, so it has a cache line to itself.
    alignas(64) std::atomic<std::size_t> nextTask{0};
    alignas(64) std::atomic<bool> bFailed{false};

    std::vector<std::thread> vThreads;
};

} // namespace TESK_KIVO2D
