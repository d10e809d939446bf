// Run under a thread sanitizer too.
#include "core/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

const int poolSizes[] = {1, 2, 3, 8, 64};

// Plain counters, one a task and one a thread: a task done twice at a time, or two threads of one number, are
// races.
struct Record {
    explicit Record(const WorkerPool& pool, std::size_t numTasks)
        : vTimes(numTasks), vOfThread(static_cast<std::size_t>(pool.size())) {}
    void note(std::size_t task, int thread) {
        ++vTimes.at(task);
        ++vOfThread.at(static_cast<std::size_t>(thread));
    }
    std::size_t sum() const { return std::accumulate(vOfThread.begin(), vOfThread.end(), std::size_t(0)); }

    std::vector<int> vTimes;
    std::vector<std::size_t> vOfThread;
};

void expectEachOnce(WorkerPool& pool, std::size_t numTasks) {
    Record record(pool, numTasks);
    pool.run(numTasks, [&](std::size_t task, int thread) { record.note(task, thread); });
    EXPECT_EQ(std::vector<int>(numTasks, 1), record.vTimes);
    EXPECT_EQ(numTasks, record.sum());
    EXPECT_FALSE(pool.hasFailed());
}

std::string thrownBy(WorkerPool& pool, std::size_t numTasks, const WorkerPool::Task& task,
                     const std::function<void()>& whileWaiting = {}) {
    try {
        pool.run(numTasks, task, whileWaiting);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "nothing";
}

void sleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

} // namespace

TEST(WorkerPool, doesEachTaskOnceInManyRunsOfAllSizes) {
    for (const int numThreads : poolSizes) {
        WorkerPool pool(numThreads);
        EXPECT_EQ(numThreads, pool.size());
        for (std::size_t numTasks = 0; numTasks < 300; ++numTasks)
            expectEachOnce(pool, numTasks);
        expectEachOnce(pool, 100000);
    }
    for (const int numThreads : {0, -5})
        EXPECT_EQ(1, WorkerPool(numThreads).size());
}

TEST(WorkerPool, theCallerIsThreadZeroAndTheOnlyOneOfAPoolOfOne) {
    for (const int numThreads : {1, 3}) {
        WorkerPool pool(numThreads);
        std::vector<char> vIsCaller(5000);
        pool.run(vIsCaller.size(), [&, caller = std::this_thread::get_id()](std::size_t task, int thread) {
            vIsCaller[task] = (std::this_thread::get_id() == caller) == (thread == 0);
            EXPECT_TRUE(numThreads > 1 || thread == 0);
        });
        EXPECT_EQ(std::vector<char>(5000, 1), vIsCaller);
    }
}

TEST(WorkerPool, tasksOfDifferentThreadsOverlap) {
    WorkerPool pool(3);
    std::atomic<int> numThere{0};
    pool.run(3, [&](std::size_t, int) { // ends only when all three have begun
        for (++numThere; numThere < 3;)
            std::this_thread::yield();
    });
    EXPECT_EQ(3, numThere);
}

TEST(WorkerPool, throwsTheExceptionOfTheLowestTaskAndServesAgain) {
    for (const int numThreads : poolSizes) {
        WorkerPool pool(numThreads);
        std::atomic<int> numThere{0};
        EXPECT_EQ("0", thrownBy(pool, std::size_t(numThreads), [&](std::size_t task, int) {
                      for (++numThere; numThere < numThreads;) // so all throw, in an order of their own
                          std::this_thread::yield();
                      if (task == 0) sleepMs(3);
                      throw std::runtime_error(std::to_string(task));
                  }));
        EXPECT_TRUE(pool.hasFailed());
        expectEachOnce(pool, 1000);
    }
}

TEST(WorkerPool, afterAFailureTasksNotBegunAreLeftOutAndLongOnesCanTell) {
    for (const int numThreads : poolSizes) {
        WorkerPool pool(numThreads);
        std::atomic<int> numDone{0};
        const auto task = [&](std::size_t task, int) {
            if (task == 7) throw std::bad_alloc();
            while (task > 7 && !pool.hasFailed())
                std::this_thread::yield();
            ++numDone;
        };
        EXPECT_EQ(std::bad_alloc().what(), thrownBy(pool, 1000000, task));
        EXPECT_LE(7, numDone);
        EXPECT_GE(7 + numThreads, numDone);
    }
}

TEST(WorkerPool, theCallerLooksUpWhileItWaitsAndOnlyThen) {
    WorkerPool pool(2);
    int numLooks = 0;
    const auto caller = std::this_thread::get_id();
    const auto look = [&] {
        EXPECT_EQ(caller, std::this_thread::get_id());
        ++numLooks;
    };
    std::atomic<bool> bLookedAtTwice{false};
    std::atomic<int> numThere{0};
    const auto helperTakesLonger = [&](std::size_t, int thread) {
        for (++numThere; numThere < 2;)
            std::this_thread::yield();
        while (thread == 1 && !bLookedAtTwice)
            std::this_thread::yield();
    };
    pool.run(2, helperTakesLonger, [&] {
        look();
        bLookedAtTwice = numLooks >= 2;
    });
    EXPECT_EQ(2, numLooks);
    WorkerPool(1).run(
        3, [](std::size_t, int) { sleepMs(12); }, look);
    EXPECT_EQ(2, numLooks);
}

TEST(WorkerPool, whatTheLookThrowsEndsTheRunUnlessATaskThrowsToo) {
    for (const bool bTaskThrows : {false, true}) {
        WorkerPool pool(4);
        std::atomic<int> numThere{0};
        const auto helpersTakeLonger = [&](std::size_t, int thread) {
            for (++numThere; numThere < 4;)
                std::this_thread::yield();
            while (thread != 0 && !pool.hasFailed())
                std::this_thread::yield();
            if (thread == 2 && bTaskThrows) throw std::runtime_error("task");
        };
        const auto look = [] { throw std::runtime_error("look"); };
        EXPECT_EQ(bTaskThrows ? "task" : "look", thrownBy(pool, 4, helpersTakeLonger, look));
        expectEachOnce(pool, 100);
    }
}
