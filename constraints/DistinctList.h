#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// A list of things that come again and again, which has an order. It takes at most twice the memory of the
// different ones, and a minimum.
template<class T>
class DistinctList {
public:
    explicit DistinctList(std::size_t minCapacity = 64) : minSize(minCapacity), sizeOfNextLook(minCapacity) {}

    bool empty() const { return vAll.empty(); }
    void add(const T& t) {
        vAll.push_back(t);
        if (vAll.size() >= sizeOfNextLook) unite();
    }
    // With some of them several times, unless `unite` comes before.
    const std::vector<T>& all() const { return vAll; }
    // So many different ones were there when that was last looked at: with the minimum, and then whenever
    // their number has doubled.
    std::size_t numKnown() const { return numDistinct; }
    // In order, and each once.
    void unite() {
        std::sort(vAll.begin(), vAll.end());
        vAll.erase(std::unique(vAll.begin(), vAll.end()), vAll.end());
        numDistinct = vAll.size();
        sizeOfNextLook = std::max(minSize, 2 * numDistinct);
    }

private:
    std::vector<T> vAll;
    std::size_t minSize, sizeOfNextLook, numDistinct = 0;
};

} // namespace TESK_KIVO2D
