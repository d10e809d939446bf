#pragma once

#include "Triangle2.h"
#include "export.h"
#include "fwd.h"

namespace TESK_KIVO2D {

/// Walks the triangles around a vertex. Around an inner vertex the circulation is a closed cycle. Around a
/// hull vertex with triangles T1 to Tk, counter-clockwise, `++` from T1 gives T2, ..., Tk, null, T1, ...:
/// null is one position, and the step after it goes to the far end of the fan.
///
/// Do not change the triangulation while one is in use.
class KIVO_API TriangleAroundVertexIterator {
public:
    /// Starts at the vertex's incident triangle. Throws `KivoException` for a vertex that has none.
    explicit TriangleAroundVertexIterator(Point2* pVtx);
    /// Starts at a given triangle of the vertex.
    TriangleAroundVertexIterator(Point2* pVtx, Triangle2* pTr);
    /// The original must not be at null (`KivoException`); assignment takes any position.
    TriangleAroundVertexIterator(const TriangleAroundVertexIterator& other);
    /// Takes over vertex and position.
    TriangleAroundVertexIterator& operator=(const TriangleAroundVertexIterator& other) = default;

    /// One step counter-clockwise.
    TriangleAroundVertexIterator& operator++();
    /// One step clockwise.
    TriangleAroundVertexIterator& operator--();
    /// The current triangle; null right after a step over the hull.
    Triangle2* operator*() const { return pTr; }
    /// Same vertex and same triangle.
    bool operator==(const TriangleAroundVertexIterator& other) const {
        return pVtx == other.pVtx && pTr == other.pTr;
    }
    /// The opposite of `==`.
    bool operator!=(const TriangleAroundVertexIterator& other) const { return !(*this == other); }

    /// What `++` would reach.
    Triangle2* previewNextTriangle() const;
    /// What `--` would reach.
    Triangle2* previewPrevTriangle() const;

protected:
    /// The step from null: to the end of the fan that the last triangle does not lie at.
    void loop();

private:
    TriangleAroundVertexIterator() = default;
    void step(int (*neighbourIndex)(int));

    Point2* pVtx = nullptr;
    Triangle2* pTr = nullptr;
    Triangle2* pSavedTr = nullptr; // the last triangle before pTr
};

} // namespace TESK_KIVO2D
