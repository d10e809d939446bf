#include "bench/peakMemory.h"

#include "Kivo_2D.h"
#include "bench/inputs.h"
#include "bench/rival.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::size_t numPoints = 10000000;

// A line of the process's status, in bytes: VmRSS is what it holds now, VmHWM the most it ever held.
double statusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == key + ":" && status >> kilobytes) return 1024 * kilobytes;
    }
    throw std::runtime_error("no " + key + " in /proc/self/status");
}

template<class Insert>
double peakBeyondNow(Insert insert) {
    const double now = statusBytes("VmRSS"), earlierPeak = statusBytes("VmHWM");
    insert();
    const double peak = statusBytes("VmHWM");
    if (peak <= earlierPeak) throw std::runtime_error("the peak lies before the insertion");
    return peak - now;
}

double peakOfKivo() {
    const std::vector<TESK_KIVO2D::Point2> vPoints = converted(makePoints("uniform", numPoints));
    std::vector<TESK_KIVO2D::Point2*> vHandles(numPoints); // written once, so that it counts as the caller's
    return peakBeyondNow([&] {
        TESK_KIVO2D::Kivo_2D kivo(static_cast<unsigned int>(numPoints));
        kivo.insert(vPoints, vHandles);
    });
}

double peakOfRival() {
    const rival::Batch batch(makePoints("uniform", numPoints));
    return peakBeyondNow([&] { batch.triangulate(); });
}

} // namespace

double residentBytes() { return statusBytes("VmRSS"); }

int printPeakMemory(const std::string& who) {
    if (who != "kivo" && who != "cgal") {
        std::fputs("--peak-memory takes kivo or cgal\n", stderr);
        return EXIT_FAILURE;
    }
    const double bytes = who == "kivo" ? peakOfKivo() : peakOfRival();
    std::printf("%.1f\n", bytes / static_cast<double>(numPoints));
    return EXIT_SUCCESS;
}

} // namespace bench
