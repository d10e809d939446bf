#include "functions.h"

#include "output/InputFile.h"
#include "output/NumberScanner.h"
#include "output/elementFiles.h"

#include <exception>

namespace TESK_KIVO2D {
namespace {

constexpr BinaryFileKind pointFile{20, 30, 1, " has wrong filetype ", ", expected: 30 or 20"};
constexpr int significantDigits = 18; // one more than needed to get each double back

// For vectors of points and of pointers to points.
template<class Element>
bool writeBinary(const char* filename, const std::vector<Element>& vPoints) {
    return writeBinaryFile(filename, pointFile, vPoints, [](OutputFile& file, const Point2& point) {
        file.raw(point.x());
        file.raw(point.y());
    });
}

template<class Element>
bool writeText(const char* filename, const std::vector<Element>& vPoints) {
    const auto writeNoHead = [](OutputFile&) {};
    return writeElementFile(filename, vPoints, writeNoHead, [](OutputFile& file, const Point2& point) {
        file.number(point.x(), significantDigits);
        file.character(' ');
        file.number(point.y(), significantDigits);
        file.character('\n');
    });
}

bool appendPairs(InputFile& file, std::vector<Point2>& vPoints) {
    NumberScanner scanner(file);
    while (const auto x = scanner.next()) {
        const auto y = scanner.next();
        if (!y) break;
        vPoints.emplace_back(*x, *y);
    }
    return !file.hasFailed();
}

} // namespace

bool writePointsBIN(const char* filename, const std::vector<Point2>& vPoints) {
    return writeBinary(filename, vPoints);
}

bool writePointsBIN(const char* filename, const std::vector<Point2*>& vPoints) {
    return writeBinary(filename, vPoints);
}

bool readPointsBIN(const char* filename, std::vector<Point2>& vPoints) {
    return readElementFile(
        filename, pointFile, vPoints,
        [](const double* pValues, std::size_t /*dimension*/) { return Point2(pValues[0], pValues[1]); });
}

bool writePointsASCII(const char* filename, const std::vector<Point2>& vPoints) {
    return writeText(filename, vPoints);
}

bool writePointsASCII(const char* filename, const std::vector<Point2*>& vPoints) {
    return writeText(filename, vPoints);
}

bool readXY(const char* filename, std::vector<Point2>& vPoints) {
    InputFile file(filename);
    if (!file.isOpen()) return complainAboutFile(filename, " is unreadable");
    const auto numBefore = static_cast<std::ptrdiff_t>(vPoints.size());
    bool bComplete = false;
    try {
        bComplete = appendPairs(file, vPoints);
    } catch (const std::exception&) { // the memory does not suffice
    }
    if (bComplete) return true;
    vPoints.erase(vPoints.begin() + numBefore, vPoints.end());
    return complainAboutFile(filename, " is unreadable");
}

} // namespace TESK_KIVO2D
