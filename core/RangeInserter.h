#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/linkIn.h"
#include "core/walk.h"

#include <bit>
#include <cstddef>

namespace TESK_KIVO2D {

// Inserts vertices that are ordered along the curve by recursive bisection down to blocks, and those by ever
// finer selections, each vertex from a triangle nearby. Vertices that have a triangle are passed over.
//
// The owner hears of each vertex: duplicate(pVtx, pUnique) when another one lies there already, and then or
// else, at its end, advance().
template<class Owner>
class RangeInserter {
public:
    RangeInserter(const InsertionSite& insertionSite, WorkCounts& workCounts, Owner& itsOwner)
        : site(insertionSite), work(workCounts), owner(itsOwner) {}

    // Bisection as long as ranges are large: what is worked on stays in the cache. Returns a triangle near
    // the last vertex.
    Triangle2* insert(Point2* const* pFirst, Point2* const* pLast, Triangle2* pStart) {
        constexpr std::ptrdiff_t blockSize = 4096;
        if (pLast - pFirst <= blockSize) {
            return insertBlock(pFirst, static_cast<std::size_t>(pLast - pFirst), pStart);
        }
        Point2* const* const pMiddle = pFirst + (pLast - pFirst) / 2;
        pStart = insertOne(*pMiddle, pStart);
        insert(pFirst, pMiddle, pStart);
        // The middle vertex has another triangle by now, or none if it is redundant.
        if (Triangle2* pMiddleT = (*pMiddle)->getIncidentTriangle()) pStart = pMiddleT;
        return insert(pMiddle + 1, pLast, pStart);
    }

private:
    // Every second one of a coarser selection at each level, so that the whole block is refined at once.
    // Going to the end of one half before the other is begun costs a fifth more flips, all along the border
    // of the two.
    Triangle2* insertBlock(Point2* const* aVertices, std::size_t num, Triangle2* pStart) {
        if (num == 0) return pStart;
        pStart = insertOne(aVertices[0], pStart);
        for (std::size_t stride = std::bit_ceil(num) / 2; stride > 0; stride /= 2) {
            for (std::size_t i = stride; i < num; i += 2 * stride) {
                if (Triangle2* pNear = aVertices[i - stride]->getIncidentTriangle()) pStart = pNear;
                pStart = insertOne(aVertices[i], pStart);
            }
        }
        return pStart;
    }

    // Returns a triangle at the vertex, or at the vertex that lies there already.
    Triangle2* insertOne(Point2* pVtx, Triangle2* pStart) {
        if (pVtx->getIncidentTriangle() == nullptr) {
            const WalkResult found = walk(pStart, *pVtx, site.tests);
            if (found.code == WalkResult::ON_CORNER) {
                owner.duplicate(pVtx, cornerAt(found, *pVtx));
                owner.advance();
                return found.pT;
            }
            insertVertex(pVtx, found, site, work);
        }
        owner.advance();
        return pVtx->getIncidentTriangle();
    }

    const InsertionSite site;
    WorkCounts& work;
    Owner& owner;
};

} // namespace TESK_KIVO2D
