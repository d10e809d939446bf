#include "functions.h"

#include "output/elementFiles.h"

namespace TESK_KIVO2D {
namespace {

constexpr BinaryFileKind segmentFile{21, 31, 2, " has wrong file type: ", " instead of 31 or 21"};

} // namespace

bool writeSegmentsBIN(const char* filename, const std::vector<Segment2>& vSegments) {
    return writeBinaryFile(filename, segmentFile, vSegments, [](OutputFile& file, const Segment2& segment) {
        const Point2 source = segment.getSrc();
        const Point2 target = segment.getTrg();
        file.raw(source.x());
        file.raw(source.y());
        file.raw(target.x());
        file.raw(target.y());
    });
}

bool readSegmentsBIN(const char* filename, std::vector<Segment2>& vSegments) {
    return readElementFile(
        filename, segmentFile, vSegments, [](const double* pValues, std::size_t dimension) {
            const double* const pTarget = pValues + dimension;
            return Segment2(Point2(pValues[0], pValues[1]), Point2(pTarget[0], pTarget[1]));
        });
}

} // namespace TESK_KIVO2D
