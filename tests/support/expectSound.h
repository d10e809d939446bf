#pragma once

#include "tests/oracle/bruteForce.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

// Demands every law of a Delaunay triangulation, layer by layer; see oracle::findFault. Small ones meet the
// empty circle law in its full form, large ones edge by edge, which is the same by Delaunay's lemma.
inline void expectSound(const TESK_KIVO2D::Kivo_2D& kivo, const std::vector<TESK_KIVO2D::Point2>& vInput) {
    const bool bSmall = vInput.size() <= 60;
    EXPECT_EQ("", oracle::findFault(kivo, vInput, bSmall ? oracle::ALL_POINTS : oracle::ONLY_NEIGHBOURS))
        << (bSmall ? doubles::hex(vInput) : "");
}

inline void expectSound(const TESK_KIVO2D::Kivo_2D& kivo) {
    EXPECT_EQ("", oracle::findFault(kivo, oracle::ONLY_NEIGHBOURS));
}
