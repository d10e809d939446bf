#pragma once

#include "Bbox2.h"
#include "Point2.h"

inline TESK_KIVO2D::Bbox2 boxOf(double minX, double minY, double maxX, double maxY) {
    TESK_KIVO2D::Bbox2 box;
    box.add(TESK_KIVO2D::Point2(minX, minY));
    box.add(TESK_KIVO2D::Point2(maxX, maxY));
    return box;
}
