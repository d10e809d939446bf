#pragma once

#include "core/SimplePool.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// Numbers the records that a pool had handed out when this was made, or had reserved: from 0, in the order of
// the pool. So what belongs to records can be kept in arrays beside them. Numbers made later from the same
// pool agree.
template<class T>
class RecordNumbers {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    // Which records of the pool have numbers.
    enum Extent { MADE, RESERVED };

    explicit RecordNumbers(const SimplePool<T>& pool, Extent extent = MADE) {
        const auto add = [this](T* pBegin, std::size_t num) {
            vRuns.push_back({pBegin, num, numRecords});
            numRecords += num;
        };
        extent == MADE ? pool.forEachRun(add) : pool.forEachReservedRun(add);
    }

    std::size_t size() const { return numRecords; }

    // The number of a record of this pool; none for one that was made later.
    std::size_t numberOf(const T* p) const {
        for (const Run& run : vRuns) { // one, as long as the pool has room in its first range of addresses
            const std::size_t offset = offsetIn(run, p);
            if (offset < run.num * sizeof(T)) return run.first + offset / sizeof(T);
        }
        return none;
    }
    // The same for any address: none for what is no record of the pool.
    std::size_t find(const void* p) const {
        for (const Run& run : vRuns) {
            const std::size_t offset = offsetIn(run, p);
            if (offset < run.num * sizeof(T) && offset % sizeof(T) == 0)
                return run.first + offset / sizeof(T);
        }
        return none;
    }
    // The record of a number below size().
    T* recordOf(std::size_t number) const {
        auto run = vRuns.begin();
        while (number - run->first >= run->num)
            ++run;
        return run->pBegin + (number - run->first);
    }
    // Calls f with records that follow one another in memory, their number, and the number of the first.
    template<class F>
    void forEachRun(F f) const {
        for (const Run& run : vRuns)
            f(run.pBegin, run.num, run.first);
    }

private:
    struct Run {
        T* pBegin;
        std::size_t num;
        std::size_t first;
    };

    static std::size_t offsetIn(const Run& run, const void* p) {
        return reinterpret_cast<std::uintptr_t>(p) - reinterpret_cast<std::uintptr_t>(run.pBegin);
    }

    std::vector<Run> vRuns;
    std::size_t numRecords = 0;
};

} // namespace TESK_KIVO2D
