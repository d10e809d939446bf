#pragma once

#include <cstddef>
#include <functional>

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
    int size() const;

    // Does a task, in the thread of this number below size(); the caller's is 0.
    using Task = std::function<void(std::size_t task, int thread)>;
    // Does the tasks 0 to numTasks - 1, each once; threads take them in this order as they become free. The
    // caller takes its share, and calls whileWaiting, if given, every few milliseconds while only others
    // still work. Returns when all are done.
    //
    // A task that throws ends the run: tasks not begun are left out, the others are waited for, and the
    // exception is thrown in the caller, of several that of the lowest task. What whileWaiting throws ends it
    // in the same way.
    void run(std::size_t numTasks, const Task& task, const std::function<void()>& whileWaiting = {});
    // True when a task of this run has thrown: long ones ask now and then, and return early.
    bool hasFailed() const;
};

} // namespace TESK_KIVO2D
