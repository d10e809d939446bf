#pragma once

#include <cstddef>

namespace TESK_KIVO2D {

// A run of reserved address space of which a growing front part is usable memory. Reserving costs no memory,
// so a pool can reserve far more than it expects to need and hand out addresses that ascend for its whole
// life.
class AddressRange {
public:
    // Reserves numBytes, or less when the system refuses (down to minBytes), above pFloor if that can be had.
    // Throws std::bad_alloc when not even minBytes are there.
    AddressRange(std::size_t numBytes, std::size_t minBytes, const void* pFloor);
    ~AddressRange();
    AddressRange(AddressRange&& other) noexcept;
    AddressRange(const AddressRange&) = delete;
    AddressRange& operator=(const AddressRange&) = delete;
    AddressRange& operator=(AddressRange&&) = delete;

    char* begin() const { return pBegin; }
    std::size_t size() const { return numReserved; }
    // Makes the first numBytes usable. Returns false when memory runs out; what was usable stays so.
    bool commit(std::size_t numBytes);

private:
    char* pBegin = nullptr;
    std::size_t numReserved = 0;
    std::size_t numCommitted = 0;
};

} // namespace TESK_KIVO2D
