#include "cli/geojsonReader.h"

#include "cli/errors.h"
#include "cli/jsonFile.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"
#include "cli/words.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace cli {

namespace {

using Json = nlohmann::json;
using TESK_KIVO2D::Point2;

// Collections in collections are read by recursion. Nobody nests them; the limit keeps the stack.
constexpr int MAX_DEPTH = 32;

// Where a value stands in the document: a member of its parent, or, without a key, an element.
struct Place {
    const Place* pParent = nullptr;
    const char* key = nullptr;
    std::size_t index = 0;
};

std::string textOf(const Place& place) {
    if (place.pParent == nullptr) return "";
    const std::string parent = textOf(*place.pParent);
    if (place.key == nullptr) return parent + "[" + std::to_string(place.index) + "]";
    return parent + (parent.empty() ? "" : ".") + place.key;
}

class GeoJsonReader {
public:
    explicit GeoJsonReader(const std::string& filename_) : filename(filename_) {}

    Input read(const Json& document) {
        const std::string type = typeOf(document, {});
        if (type == "FeatureCollection") {
            forEachElement(document, "features", {},
                           [this](const Json& feature, const Place& place) { readFeature(feature, place); });
        } else if (type == "Feature") {
            readFeature(document, {});
        } else {
            readGeometry(document, {}, 0);
        }
        keepHeights();
        input.numPoints = input.table.vPoints.size();
        input.vFilenames = {filename};
        return std::move(input);
    }

private:
    [[noreturn]] void fail(const Place& place, const std::string& text) const {
        const std::string where = textOf(place);
        throw FileError(filename, (where.empty() ? "the document" : where) + " " + text);
    }

    const Json& memberOf(const Json& object, const char* key, const Place& place) const {
        const auto it = object.find(key);
        if (it == object.end()) fail(place, "has no member \"" + std::string(key) + "\"");
        return *it;
    }

    std::string typeOf(const Json& object, const Place& place) const {
        if (!object.is_object()) fail(place, "is " + nameOfKind(object) + " where an object is expected");
        const Json& type = memberOf(object, "type", place);
        if (!type.is_string()) {
            fail({&place, "type"}, "is " + nameOfKind(type) + " where a string is expected");
        }
        return type.get<std::string>();
    }

    static std::string nameOfKind(const Json& value) {
        if (value.is_null()) return "null";
        return (value.is_object() || value.is_array() ? "an " : "a ") + std::string(value.type_name());
    }

    void expectArray(const Json& value, const Place& place) const {
        if (!value.is_array()) fail(place, "is " + nameOfKind(value) + " where an array is expected");
    }

    // Reads each element of an array, with its place.
    template<class ReadElement>
    void forEachElement(const Json& array, const Place& place, const ReadElement& readElement) {
        expectArray(array, place);
        for (std::size_t i = 0; i < array.size(); ++i)
            readElement(array[i], Place{&place, nullptr, i});
    }
    template<class ReadElement>
    void forEachElement(const Json& object, const char* key, const Place& place,
                        const ReadElement& readElement) {
        forEachElement(memberOf(object, key, place), Place{&place, key}, readElement);
    }

    void readFeature(const Json& feature, const Place& place) {
        const std::string type = typeOf(feature, place);
        if (type != "Feature") fail(place, "is of type " + inQuotes(type) + " where a Feature is expected");
        const Json& geometry = memberOf(feature, "geometry", place);
        if (!geometry.is_null()) readGeometry(geometry, {&place, "geometry"}, 0);
    }

    void readGeometry(const Json& geometry, const Place& place, int depth) {
        const std::string type = typeOf(geometry, place);
        if (type == "GeometryCollection") {
            if (depth == MAX_DEPTH) fail(place, "is nested too deeply");
            forEachElement(geometry, "geometries", place,
                           [this, depth](const Json& part, const Place& partPlace) {
                               readGeometry(part, partPlace, depth + 1);
                           });
            return;
        }
        const auto it = std::find_if(GEOMETRIES.begin(), GEOMETRIES.end(),
                                     [&type](const auto& kind) { return type == kind.name; });
        if (it == GEOMETRIES.end()) fail(place, "is of unknown type " + inQuotes(type));
        const Json& coordinates = memberOf(geometry, "coordinates", place);
        readNested(coordinates, {&place, "coordinates"}, *it, it->numLevels);
    }

    struct GeometryKind {
        const char* name;
        int numLevels; // of arrays around what the reader takes
        void (GeoJsonReader::*read)(const Json& coordinates, const Place& place);
    };
    static const std::array<GeometryKind, 6> GEOMETRIES;

    // An empty array is nothing, wherever it stands.
    void readNested(const Json& value, const Place& place, const GeometryKind& kind, int numLevels) {
        expectArray(value, place);
        if (value.empty()) return;
        if (numLevels == 0) return (this->*kind.read)(value, place);
        forEachElement(value, place,
                       [this, &kind, numLevels](const Json& element, const Place& elementPlace) {
                           readNested(element, elementPlace, kind, numLevels - 1);
                       });
    }

    struct Position {
        double x, y;
        std::optional<double> height;
    };

    Position positionOf(const Json& value, const Place& place) const {
        expectArray(value, place);
        if (value.size() < 2)
            fail(place, "holds " + counted(value.size(), "number") + " where at least 2 are expected");
        double aValues[3] = {0.0, 0.0, 0.0};
        const std::size_t numValues = std::min<std::size_t>(value.size(), 3);
        for (std::size_t i = 0; i < numValues; ++i) {
            if (!value[i].is_number()) {
                fail({&place, nullptr, i}, "is " + nameOfKind(value[i]) + " where a number is expected");
            }
            aValues[i] = value[i].get<double>();
        }
        return {aValues[0], aValues[1], numValues == 3 ? std::optional(aValues[2]) : std::nullopt};
    }

    void readPoint(const Json& value, const Place& place) {
        const Position position = positionOf(value, place);
        if (input.table.vPoints.size() == MAX_POINTS) fail(place, "is one point more than can be numbered");
        addPoint(input.table, position.x, position.y);
        input.table.vAttributes.push_back(position.height.value_or(0.0));
        if (position.height) ++numHeights;
    }

    // Reads the first so many positions and joins them.
    void readChain(const Json& line, std::size_t numPositions, const Place& place) {
        const std::size_t first = input.table.vPoints.size();
        for (std::size_t i = 0; i < numPositions; ++i) {
            readPoint(line[i], {&place, nullptr, i});
            if (i > 0) input.domain.vSegments.push_back({first + i - 1, first + i, 0});
        }
    }

    void readLine(const Json& line, const Place& place) {
        if (line.size() < 2) fail(place, "is a line of one position");
        readChain(line, line.size(), place);
    }

    // The last position is the first one again.
    void readRing(const Json& ring, const Place& place) {
        const std::size_t last = ring.size() - 1;
        if (last < 3) {
            fail(place,
                 "is a ring of " + std::to_string(ring.size()) + " positions where at least 4 are expected");
        }
        const std::size_t first = input.table.vPoints.size();
        readChain(ring, last, place);
        const Position end = positionOf(ring[last], {&place, nullptr, last});
        const Point2& start = input.table.vPoints[first];
        if (end.x != start.x() || end.y != start.y()) {
            fail(place, "is a ring that is not closed: its last position is not its first one");
        }
        input.domain.vSegments.push_back({first + last - 1, first, 0});
    }

    void keepHeights() {
        PointTable& table = input.table;
        if (numHeights > 0 && numHeights == table.vPoints.size()) {
            table.numAttributes = 1;
            return;
        }
        table.vAttributes.clear();
        if (numHeights == 0) return;
        std::fprintf(stderr, "kivo2d: %s: %zu of %zu positions have no height; all heights were dropped\n",
                     filename.c_str(), table.vPoints.size() - numHeights, table.vPoints.size());
    }

    const std::string& filename;
    Input input;
    std::size_t numHeights = 0;
};

const std::array<GeoJsonReader::GeometryKind, 6> GeoJsonReader::GEOMETRIES{{
    {"Point", 0, &GeoJsonReader::readPoint},
    {"MultiPoint", 1, &GeoJsonReader::readPoint},
    {"LineString", 0, &GeoJsonReader::readLine},
    {"MultiLineString", 1, &GeoJsonReader::readLine},
    {"Polygon", 1, &GeoJsonReader::readRing},
    {"MultiPolygon", 2, &GeoJsonReader::readRing},
}};

} // namespace

Input readGeoJson(const std::string& filename) {
    const Json document = readJson(filename);
    return GeoJsonReader(filename).read(document);
}

} // namespace cli
