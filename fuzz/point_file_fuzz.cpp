#include "fuzz/check.h"

#include "functions.h"

#include <bit>
#include <cstdio>
#include <unistd.h>

#include <sys/mman.h>

// The readers of point and segment files on any bytes: a failure leaves the vector as it was, and what was
// read is read again, bit for bit, after it has been written.

using namespace TESK_KIVO2D;

namespace {

// A file that lives in memory.
class MemoryFile {
public:
    MemoryFile() : descriptor(memfd_create("fuzz", 0)), path("/proc/self/fd/" + std::to_string(descriptor)) {
        CHECK(descriptor >= 0);
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void fill(const std::uint8_t* pBytes, std::size_t num) {
        CHECK(ftruncate(descriptor, 0) == 0);
        CHECK(pwrite(descriptor, pBytes, num, 0) == static_cast<ssize_t>(num));
    }
    const char* name() const { return path.c_str(); }

private:
    int descriptor;
    std::string path;
};

bool areSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}
bool areSameBits(const Point2& a, const Point2& b) {
    return areSameBits(a.x(), b.x()) && areSameBits(a.y(), b.y());
}
bool areSameBits(const Segment2& a, const Segment2& b) {
    return areSameBits(a.getSrc(), b.getSrc()) && areSameBits(a.getTrg(), b.getTrg());
}

template<class Element>
void readAndReturn(const char* name, bool (*read)(const char*, std::vector<Element>&),
                   bool (*write)(const char*, const std::vector<Element>&)) {
    static MemoryFile copy;
    const std::vector<Element> vBefore(1);
    std::vector<Element> vElements = vBefore, vAgain;
    if (!read(name, vElements)) {
        CHECK(vElements.size() == 1);
        return;
    }
    CHECK(!vElements.empty() && areSameBits(vElements[0], vBefore[0]));
    CHECK(write(copy.name(), vElements));
    CHECK(read(copy.name(), vAgain));
    CHECK(vAgain.size() == vElements.size());
    for (std::size_t i = 0; i < vAgain.size(); ++i)
        CHECK(areSameBits(vAgain[i], vElements[i]));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    static MemoryFile input;
    setMessageSink([](MessageChannel, const std::string&) {});
    input.fill(pBytes, num);
    readAndReturn<Point2>(input.name(), readXY, writePointsASCII);
    readAndReturn<Point2>(input.name(), readPointsBIN, writePointsBIN);
    readAndReturn<Segment2>(input.name(), readSegmentsBIN, writeSegmentsBIN);
    return 0;
}
