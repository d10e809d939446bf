#pragma once

#include "cli/Trails.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cli {

class OutputFile;

struct Pixel {
    int x = 0;
    int y = 0;
};

// The vertices of triangles on the page, y downwards, in hundredths of a unit: whole numbers are short.
class Page {
public:
    static constexpr int LONG_SIDE = 100000;
    static constexpr int MARGIN = 1000; // for the width of strokes

    explicit Page(const TESK_KIVO2D::MeshArrays& arrays);

    int getWidth() const { return width; }
    int getHeight() const { return height; }
    std::size_t numVertices() const { return vPixels.size(); }
    const Pixel& operator[](std::uint32_t vertex) const { return vPixels[vertex]; }
    Pixel at(const TESK_KIVO2D::Point2& point) const;
    double lengthOf(const Trails::Edge& edge) const;

private:
    double difference(double a, double b) const { return a * factor - b * factor; }
    int onPage(double length) const;

    double factor = 1.0;
    double left = 0.0, top = 0.0, longSide = 0.0;
    int width = 0;
    int height = 0;
    std::vector<Pixel> vPixels;
};

// The data of one path, each point relative to the one before: that makes small numbers.
class PathData {
public:
    explicit PathData(OutputFile& out_) : out(out_) {}

    void moveTo(const Pixel& pixel);
    void lineTo(const Pixel& pixel) {
        if (pixel.x != at.x || pixel.y != at.y) step(pixel);
    }
    void close();

private:
    void step(const Pixel& pixel);
    // A minus sign separates too.
    void number(int value);

    OutputFile& out;
    bool bSeparated = true;
    Pixel at;
    Pixel subpathStart;
};

// A browser draws many short paths faster than one long one, since it passes over those out of sight.
constexpr std::size_t MAX_EDGES_OF_PATH = 1000;

// The data of one path along the border: what lies inside an odd number of rings is filled.
void writeArea(OutputFile& out, const Page& page, const std::vector<Trails::Edge>& vBorder);

struct Stroke {
    const char* name;
    const char* color;
    int width;
};

// A group of paths, or nothing without edges.
void writeStrokes(OutputFile& out, const Page& page, const Stroke& stroke,
                  const std::vector<Trails::Edge>& vEdges);

} // namespace cli
