#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// A condition of a fuzz target: where it fails, the fuzzer keeps the input.
#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                             \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

// What the fuzzer gave, from front to back; zeros behind its end.
class Bytes {
public:
    Bytes(const std::uint8_t* pBytes, std::size_t num) : pNext(pBytes), pEnd(pBytes + num) {}
    bool atEnd() const { return pNext == pEnd; }
    std::uint8_t byte() { return atEnd() ? std::uint8_t(0) : *pNext++; }
    // Of any bits, also such as is not finite.
    double anyDouble() {
        double value = 0;
        const std::size_t num = std::min<std::size_t>(sizeof value, static_cast<std::size_t>(pEnd - pNext));
        if (num != 0) std::memcpy(&value, pNext, num);
        pNext += num;
        return value;
    }
    template<class T>
    T* any(const std::vector<T*>& v) {
        return v.empty() ? nullptr : v[byte() % v.size()];
    }

private:
    const std::uint8_t *pNext, *pEnd;
};
