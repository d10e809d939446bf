#pragma once

/// \file
/// Declarations of the library's classes, for headers that only need their names.

namespace TESK_KIVO2D {

class Bbox2;
class Circle2;
class Color;
class ConstraintGraph2;
class ConstraintMgr;
class ConstraintSegment2;
class Dt2;
class Edge2;
class Kivo_2D;
class KivoException;
class Label;
class MeshGenParams;
class MsgBase;
class Point2;
class ResultOrder;
class Segment2;
class SegmentChecker;
class TeskTest;
class Triangle2;
class TriangleAroundVertexIterator;
class UserPredicateT;
class Vector2;
class VertexPair2;
class Visualizer2;
class Zone2;
class ZoneEvaluation;
class ZoneHost;
class ZoneRegistry;
struct MeshArrays;
struct RefinementReport;

} // namespace TESK_KIVO2D
