#pragma once

#include "tests/oracle/constraints.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

using Segments = std::vector<TESK_KIVO2D::Segment2>;

// A triangulation that remembers what its graphs were given, and what it said.
struct Constrained {
    TESK_KIVO2D::Kivo_2D kivo;
    std::vector<oracle::GivenGraph> vGraphs;
    std::string messages;

    TESK_KIVO2D::ConstraintGraph2* add(Segments vSegments, TESK_KIVO2D::ConstraintInsertionStrategy cis,
                                       bool bOriented = false) {
        const CapturedMessages captured;
        TESK_KIVO2D::ConstraintGraph2* pGraph = kivo.createConstraint(vSegments, cis, bOriented);
        messages += captured.output() + captured.error();
        EXPECT_NE(nullptr, pGraph);
        if (pGraph != nullptr) vGraphs.push_back({pGraph, std::move(vSegments)});
        return pGraph;
    }
    // Each segment by a call of its own, by turns with either strategy and with directions or without.
    void addOneByOne(const Segments& vSegments) {
        for (std::size_t i = 0; i < vSegments.size(); ++i)
            add({vSegments[i]}, TESK_KIVO2D::ConstraintInsertionStrategy(i % 2), i % 3 == 0);
    }

    bool hasSaid(const std::string& text) const { return messages.find(text) != std::string::npos; }
    std::string given() const {
        std::string text;
        for (const oracle::GivenGraph& graph : vGraphs) {
            doubles::Points vEnds;
            for (const TESK_KIVO2D::Segment2& s : graph.vSegments)
                vEnds.insert(vEnds.end(), {s.getSrc(), s.getTrg()});
            if (vEnds.size() <= 100) text += doubles::hex(vEnds) + "\n";
        }
        return text;
    }
};

// Demands all laws of constraints (see oracle::findConstraintFault), and that the triangulation's own check
// agrees. A conforming segment that doubles are too coarse for is an edge too, if not Delaunay.
inline void expectConstrained(const Constrained& c) {
    EXPECT_EQ("", oracle::findConstraintFault(c.kivo, c.vGraphs)) << c.given();
    EXPECT_FALSE(c.hasSaid("insufficient") || c.hasSaid("ERROR")) << c.messages << c.given();
    if (!c.kivo.is2D()) return;
    const std::string num = std::to_string(oracle::leafEdges(c.vGraphs).size());
    for (const bool bCircles : {false, true}) {
        const CapturedMessages captured;
        EXPECT_TRUE(c.kivo.checkValidity(bCircles, "constrained")) << c.given();
        EXPECT_EQ(
            "      [Kivo2D-Message] Kivo_2D::CheckValidity(constrained), INFO: has been started\n"
            "\n* ConstraintSegments (alive): " +
                num + ", contained: " + num +
                ", missing: 0\n"
                "      [Kivo2D-Message] Kivo_2D::CheckValidity(constrained), INFO: Valid triangulation\n",
            captured.output() + captured.error());
    }
}
