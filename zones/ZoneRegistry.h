#pragma once

#include "Zone2.h"
#include "zones/ZoneHost.h"
#include "zones/enclosedTriangles.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace TESK_KIVO2D {

// Owns the zones of a triangulation, and is their only maker. What it can't make is null, and has been
// reported.
class ZoneRegistry {
public:
    explicit ZoneRegistry(ZoneHost& triangulation);
    ~ZoneRegistry();

    Zone2* createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc);
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc);
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc,
                      const Point2& startPoint);
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles);
    Zone2* createEnclosedZone(const std::vector<ConstraintGraph2*>& vGraphs, InsideRule rule,
                              const std::vector<Point2>& vHolePoints);
    // The operands are zones of this triangulation.
    Zone2* createResultZone(ZoneLocation zoneLoc, Zone2* pZone0, Zone2* pZone1);
    // A ZL_GROW zone of the triangles, and a ZL_BOUNDED one. No set, no zone, and no message.
    Zone2* createGrownZone(const TriangleSet& triangles);
    Zone2* createBoundedZone(const TriangleSet& triangles);
    void deleteZone(Zone2* pZone);

    static ZoneHost& hostOf(const Zone2& zone) { return zone.dt; }
    // True for a zone of this triangulation. The pointer may lead nowhere.
    bool isAlive(const Zone2* pZone) const { return mZones.count(pZone) != 0; }
    // The same for the zone that had this number.
    bool isAlive(const Zone2* pZone, std::uint64_t number) const {
        const auto it = mZones.find(pZone);
        return it != mZones.end() && it->second->number == number;
    }

    // Those with start points, in the order in which they were made.
    std::vector<Zone2*> growingZones() const;

private:
    struct Deleter {
        void operator()(Zone2* pZone) const { delete pZone; }
    };
    using OwnedZone = std::unique_ptr<Zone2, Deleter>;

    Zone2* add(OwnedZone pZone);
    // What must hold of all graphs; what does not is reported.
    bool hasTriangles() const;
    bool areOwn(const std::vector<ConstraintGraph2*>& vGraphs) const;
    bool areOriented(const std::vector<ConstraintGraph2*>& vGraphs) const;

    ZoneHost& dt;
    std::map<const Zone2*, OwnedZone, std::less<>> mZones; // its order is that of addresses
    std::uint64_t nextNumber = 1;
};

} // namespace TESK_KIVO2D
