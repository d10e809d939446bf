#include "core/WorkerPool.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace TESK_KIVO2D {

WorkerPool::WorkerPool(int numThreads) {
    if (numThreads <= 1) return;
    vThreads.reserve(static_cast<std::size_t>(numThreads) - 1);
    try {
        for (int thread = 1; thread < numThreads; ++thread)
            vThreads.emplace_back([this, thread] { serve(thread); });
    } catch (const std::exception&) {
        // No more threads to be had, or no memory for them: those that run must not be lost.
    }
}

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard lock(mutex);
        bStop = true;
    }
    wakeWorkers.notify_all();
    for (std::thread& thread : vThreads)
        thread.join();
}

void WorkerPool::run(std::size_t numAll, const Task& task, const std::function<void()>& whileWaiting) {
    pTask = &task;
    numTasks = numAll;
    nextTask.store(0, std::memory_order_relaxed);
    bFailed.store(false, std::memory_order_relaxed);
    const std::size_t numHelpers = numAll > 1 ? std::min(vThreads.size(), numAll - 1) : 0;
    if (numHelpers > 0) {
        {
            const std::lock_guard lock(mutex);
            numInvited = numHelpers;
        }
        if (numHelpers == vThreads.size()) {
            wakeWorkers.notify_all();
        } else {
            for (std::size_t i = 0; i < numHelpers; ++i)
                wakeWorkers.notify_one();
        }
    }
    doTasks(0);
    if (numHelpers > 0) await(whileWaiting);
    if (pFailure) std::rethrow_exception(std::exchange(pFailure, nullptr));
}

void WorkerPool::serve(int thread) {
    std::unique_lock lock(mutex);
    while (true) {
        wakeWorkers.wait(lock, [this] { return bStop || numInvited > 0; });
        if (bStop) return;
        --numInvited;
        ++numBusy;
        lock.unlock();
        doTasks(thread);
        lock.lock();
        if (--numBusy == 0) wakeCaller.notify_one();
    }
}

void WorkerPool::doTasks(int thread) {
    while (!hasFailed()) {
        const std::size_t i = nextTask.fetch_add(1, std::memory_order_relaxed);
        if (i >= numTasks) return;
        try {
            (*pTask)(i, thread);
        } catch (...) {
            fail(i);
        }
    }
}

// Within a handler: keeps its exception if that is the one to report.
void WorkerPool::fail(std::size_t task) {
    const std::lock_guard lock(mutex);
    bFailed.store(true, std::memory_order_relaxed);
    if (!pFailure || task < failedTask) {
        pFailure = std::current_exception();
        failedTask = task;
    }
}

// The caller has found no more tasks to do.
void WorkerPool::await(const std::function<void()>& whileWaiting) {
    constexpr std::chrono::milliseconds pause(5);
    const auto isDone = [this] { return numBusy == 0; };
    std::unique_lock lock(mutex);
    numInvited = 0;
    while (whileWaiting && !hasFailed()) {
        if (wakeCaller.wait_for(lock, pause, isDone)) return;
        lock.unlock();
        try {
            whileWaiting();
        } catch (...) {
            fail(numTasks); // an exception of a task goes first
        }
        lock.lock();
    }
    wakeCaller.wait(lock, isDone);
}

} // namespace TESK_KIVO2D
