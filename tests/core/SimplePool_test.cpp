#include "core/SimplePool.h"

#include "KivoException.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <functional>

using namespace TESK_KIVO2D;

namespace {

template<std::size_t numBytes>
struct Record {
    alignas(8) char bytes[numBytes];
};

} // namespace

TEST(SimplePool, startsAtTheEstimateAddsHalfAndThenDoubles) {
    SimplePool<Record<48>> pool;
    pool.init(10);
    for (int i = 0; i < 60; ++i)
        pool.alloc();
    EXPECT_EQ((std::vector<int>{10, 5, 10, 20, 40}), pool.blockCapacities());
    EXPECT_EQ(60u, pool.size());
}

TEST(SimplePool, capsBlocksAtAHundredMillionBytes) {
    EXPECT_EQ(2083333, SimplePool<Record<48>>::maxBlockCapacity);
    EXPECT_EQ(3125000, SimplePool<Record<32>>::maxBlockCapacity);
    EXPECT_EQ(6250000, SimplePool<Record<16>>::maxBlockCapacity);
    EXPECT_EQ(694444, SimplePool<Record<144>>::maxBlockCapacity);
    SimplePool<Record<48>> pool;
    pool.init(std::int64_t(1) << 33); // capped too: only addresses are taken, memory comes with use
    EXPECT_EQ((std::vector<int>{2083333}), pool.blockCapacities());
}

TEST(SimplePool, handsOutAscendingAddressesAcrossBlocksWhateverTheEstimate) {
    SimplePool<Record<48>> pool;
    pool.init(3);
    std::vector<Record<48>*> vAll;
    for (int i = 0; i < 200000; ++i) {
        Record<48>* p = pool.alloc();
        p->bytes[47] = static_cast<char>(i); // usable memory
        ASSERT_TRUE(vAll.empty() || std::less<>()(vAll.back(), p));
        vAll.push_back(p);
    }
    std::size_t next = 0;
    pool.forEach([&](Record<48>* p) { ASSERT_EQ(vAll[next++], p); });
    EXPECT_EQ(vAll.size(), next);
}

TEST(SimplePool, reservingAheadChangesNoOrder) {
    SimplePool<Record<32>> pool;
    pool.init(2);
    Record<32>* pFirst = pool.alloc();
    pool.reserve(1000);
    const auto vCapacities = pool.blockCapacities();
    for (int i = 0; i < 1000; ++i)
        EXPECT_TRUE(std::less<>()(pFirst, pool.alloc()));
    EXPECT_EQ(vCapacities, pool.blockCapacities());
    EXPECT_EQ(1001u, pool.size());
}

TEST(SimplePool, complainsAboutMisuse) {
    const CapturedMessages messages;
    SimplePool<Record<16>> pool;
    EXPECT_THROW(pool.alloc(), KivoException);
    pool.init(4);
    pool.alloc();
    pool.init(7);
    EXPECT_EQ((std::vector<int>{4, 7}), pool.blockCapacities());
    EXPECT_NE(std::string::npos, messages.output().find("Condition [ initialized failed ]"));
    EXPECT_NE(std::string::npos,
              messages.output().find("SimplePool::init(..), ERROR: This pool is already initialized\n"));
}

TEST(AddressRange, keepsWhatItHasWhenMoreIsRefused) {
    AddressRange range(1 << 20, 1 << 20, nullptr);
    EXPECT_TRUE(range.commit(100));
    range.begin()[99] = 1;
    EXPECT_FALSE(range.commit((1 << 20) + 1));
    EXPECT_TRUE(range.commit(1 << 20));
    range.begin()[(1 << 20) - 1] = 1;
    EXPECT_EQ(1, range.begin()[99]);
    EXPECT_THROW(AddressRange(std::size_t(1) << 62, std::size_t(1) << 62, nullptr), std::bad_alloc);
}
