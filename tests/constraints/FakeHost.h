#pragma once

#include "KivoException.h"
#include "constraints/ConstraintMgr.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Stands for a triangulation: keeps vertices and a set of edges, and no triangles. Tests say what happens
// when a segment or a point is inserted.
struct FakeHost : TESK_KIVO2D::ConstraintHost {
    using Point2 = TESK_KIVO2D::Point2;
    using CSeg = TESK_KIVO2D::ConstraintSegment2;

    bool b2D = true;
    std::function<void(CSeg*)> beforeSegment = [](CSeg*) {};
    std::function<void(const Point2&)> beforePoint = [](const Point2&) {};
    std::vector<std::pair<Point2*, Point2*>> vInserted; // edges in the order in which they were inserted
    std::vector<Point2*> vLegalized;
    std::set<std::pair<const Point2*, const Point2*>> sEdges;
    TESK_KIVO2D::TeskTest tests;
    TESK_KIVO2D::ProgressHub hub{"fake"};
    TESK_KIVO2D::SimplePool<Point2> pool;
    std::map<std::pair<double, double>, Point2*> mPoints;
    TESK_KIVO2D::ConstraintMgr mgr{*this};

    FakeHost() { pool.init(100); }
    bool is2D() const override { return b2D; }
    std::size_t numberOfPoints() const override { return mPoints.size(); }
    TESK_KIVO2D::TeskTest& predicates() override { return tests; }
    TESK_KIVO2D::ProgressHub& progressHub() override { return hub; }
    Point2* insert(const Point2& p) override {
        beforePoint(p);
        Point2*& pVtx = mPoints[{p.x(), p.y()}];
        if (pVtx == nullptr) pVtx = new (pool.alloc()) Point2(p);
        return pVtx;
    }
    void insertVector(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) override {
        for (std::size_t i = 0; i < numPoints; ++i)
            aHandles[i] = insert(aPoints[i]);
    }
    bool insertSegment(CSeg* pCSeg) override {
        beforeSegment(pCSeg);
        if (!pCSeg->isAlive()) {
            std::vector<CSeg*> vLeaves;
            pCSeg->getChildrenRec(vLeaves);
            for (CSeg* pLeaf : vLeaves)
                insertSegment(pLeaf);
        } else if (sEdges.insert({pCSeg->getSrc(), pCSeg->getTrg()}).second) {
            vInserted.emplace_back(pCSeg->getSrc(), pCSeg->getTrg());
        }
        return true;
    }
    bool isEdge(const Point2* p, const Point2* q) const override {
        return sEdges.count(std::minmax(p, q)) > 0;
    }
    void legalizeAround(Point2* pVtx) override { vLegalized.push_back(pVtx); }
    void legalizeEdge(const Point2*, const Point2*) override {}
    void removeInnerVertices(const Point2*, const Point2&) override {}
    std::size_t allowSteinerPoints(std::size_t) override { return 0; }

    Point2* at(double x, double y) { return insert(Point2(x, y)); }
};

// What is printed when a condition fails inside the call.
template<class F>
void expectFails(const std::string& condition, F call) {
    const CapturedMessages messages;
    EXPECT_THROW(call(), TESK_KIVO2D::KivoException);
    EXPECT_NE(std::string::npos,
              (messages.output() + messages.error()).find("Condition [ " + condition + " failed ]"))
        << messages.output() << messages.error();
}
