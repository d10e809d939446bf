#include "core/AddressRange.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <thread>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

constexpr std::size_t megabyte = std::size_t(1) << 20;

} // namespace

TEST(AddressRange, isReadyAgainAfterItWasGivenBack) {
    // Larger than what pools ask for, so that none of theirs serves.
    const std::size_t numBytes = std::size_t(1) << 36;
    const char* pFirst = nullptr;
    for (int round = 0; round < 3; ++round) {
        AddressRange range(numBytes, megabyte, nullptr);
        if (round == 0) pFirst = range.begin();
        EXPECT_EQ(pFirst, range.begin());
        EXPECT_GE(range.size(), numBytes);
        for (const std::size_t size : {megabyte, 9 * megabyte}) {
            ASSERT_TRUE(range.commit(size));
            std::memset(range.begin(), round, size);
            EXPECT_EQ(round, range.begin()[size - 1]);
        }
        EXPECT_FALSE(range.commit(range.size() + 1));
    }
}

TEST(AddressRange, liesAboveTheFloorAlsoWhenAnotherWasKept) {
    std::optional<AddressRange> low(std::in_place, megabyte, megabyte, nullptr);
    const void* const pFloor = low->begin() + low->size();
    low.reset();
    const AddressRange high(megabyte, megabyte, pFloor);
    EXPECT_GE(reinterpret_cast<std::uintptr_t>(high.begin()), reinterpret_cast<std::uintptr_t>(pFloor));
}

TEST(AddressRange, belongsToOneThreadAtATime) {
    std::vector<std::thread> vThreads;
    for (int id = 1; id <= 4; ++id) {
        vThreads.emplace_back([id] {
            for (int round = 0; round < 200; ++round) {
                AddressRange range(64 * megabyte, megabyte, nullptr);
                ASSERT_TRUE(range.commit(megabyte));
                std::memset(range.begin(), id, megabyte);
                for (std::size_t i = 0; i < megabyte; i += 4096)
                    ASSERT_EQ(id, range.begin()[i]);
            }
        });
    }
    for (std::thread& thread : vThreads)
        thread.join();
}
