#pragma once

#include <cstddef>

namespace TESK_KIVO2D {

// A run of reserved address space of which a growing front part is usable memory. Reserving costs no memory,
// so a pool can reserve far more than it expects to need and hand out addresses that ascend for its whole
// life.
//
// A few ranges are kept for the next one when they are given back, since the first touch of fresh memory may
// take as long as all the work done in it. Their memory stays the system's to take (MADV_FREE), and it is at
// most a sixteenth of the machine's. Safe to use in several threads; a range belongs to one at a time.
class AddressRange {
public:
    // Reserves numBytes, or less when the system refuses (down to minBytes), above pFloor if that can be had.
    // Throws std::bad_alloc when not even minBytes are there. The memory holds anything.
    AddressRange(std::size_t numBytes, std::size_t minBytes, const void* pFloor);
    ~AddressRange();
    AddressRange(AddressRange&& other) noexcept;
    AddressRange(const AddressRange&) = delete;
    AddressRange& operator=(const AddressRange&) = delete;
    AddressRange& operator=(AddressRange&&) = delete;

    char* begin() const { return place.pBegin; }
    std::size_t size() const { return place.numReserved; }
    // Makes the first numBytes usable. Returns false when memory runs out; what was usable stays so.
    bool commit(std::size_t numBytes);

private:
    friend class KeptRanges;
    struct Place {
        char* pBegin = nullptr;
        std::size_t numReserved = 0;
        std::size_t numUsable = 0; // the front part that may be read and written
    };

    Place place;
    std::size_t numCommitted = 0; // asked for since this range was made
};

} // namespace TESK_KIVO2D
