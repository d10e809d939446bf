#include "fuzz/check.h"

#include "Kivo_2D.h"
#include "tests/oracle/bruteForce.h"

#include <algorithm>
#include <array>
#include <set>

// Insertions, removals and constraints in any order, on small grids, where points lie on common lines and
// circles. What is left after each step must be the constrained Delaunay triangulation of the vertices that
// should be there.

using namespace TESK_KIVO2D;

namespace {

class Run : Bytes {
public:
    Run(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num), mode(byte() % 6) {}

    void go() {
        // Conforming segments may have thousands of pieces: too many for slow checks.
        constexpr std::size_t many = 400;
        for (int i = 0; i < 80 && !atEnd(); ++i) {
            const std::uint8_t step = byte();
            if (step < 120) {
                sVertices.insert(kivo.insert(point()));
            } else if (step < 230) {
                removeOne(step);
            } else if (step < 245) {
                constrain(step % 2 == 0 ? CIS_CONSTRAINED_DELAUNAY : CIS_CONFORMING_DELAUNAY);
            } else {
                insertBatch();
            }
            if (kivo.numberOfPoints() > many) return;
            check();
        }
    }

private:
    Point2 point() {
        constexpr std::array<double, 6> units = {1, 0.1, 1.0 / 3, 1e-160, 1e150, 0x1p-52};
        const double offset = mode == 5 ? 1 : 0;
        const std::uint8_t xy = byte();
        return {(xy & 15) * units[mode] + offset, (xy >> 4) * units[mode] + offset};
    }
    void removeOne(std::uint8_t step) {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        if (v.empty()) return;
        Point2* const pVtx = v[(step * 256u + byte()) % v.size()];
        const bool bStays = kivo.isConstraint(pVtx);
        kivo.remove(pVtx);
        if (!bStays) sVertices.erase(pVtx);
        kivo.remove(bStays ? nullptr : pVtx);
    }
    void constrain(ConstraintInsertionStrategy cis) {
        std::vector<Segment2> vSegments;
        for (int i = 0; i < 3; ++i)
            vSegments.emplace_back(point(), point());
        kivo.createConstraint(vSegments, cis);
        takeAll();
    }
    void insertBatch() {
        std::vector<Point2> v;
        for (int i = byte() % 16; i >= 0; --i)
            v.push_back(point());
        kivo.insert(v);
        takeAll();
    }
    void takeAll() {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        const std::set<Point2*> sNow(v.begin(), v.end());
        CHECK(std::includes(sNow.begin(), sNow.end(), sVertices.begin(), sVertices.end()));
        sVertices = sNow;
    }
    void check() {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        CHECK(std::set<Point2*>(v.begin(), v.end()) == sVertices);
        CHECK(kivo.numberOfPoints() == sVertices.size());
        if (!kivo.is2D()) return;
        kivo.applyConstraintsAndZones();
        takeAll();
        v.clear();
        kivo.getVertexPointers(v);
        CHECK(kivo.checkValidity(true, "removal"));
        const auto isConstraint = [&](Point2* p, Point2* q) { return kivo.isConstraint(p, q); };
        const std::string fault = oracle::findFault(kivo, isConstraint);
        if (!fault.empty()) std::fprintf(stderr, "%s\n", fault.c_str());
        CHECK(fault.empty());
        for (Point2* const p : v)
            CHECK(kivo.locate(*p)->hasVertex(p));
    }

    std::size_t mode;
    Kivo_2D kivo;
    std::set<Point2*> sVertices;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setMessageSink([](MessageChannel, const std::string&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Run(pBytes, num).go();
    return 0;
}
