#pragma once

#include "export.h"
#include "fwd.h"

#include <memory>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

/// Writes a drawing as one PostScript page (A4, portrait).
///
/// Objects are collected first, as copies: what was added may change or die. `writeFile`, or else the
/// destructor, writes them all, scaled to fill the page: triangles lowest, then segments, ends of segments,
/// circles, points and labels, each kind in the order added.
///
/// A file that can't be opened is not reported: the drawing is collected and goes nowhere. Objects with a
/// coordinate that is infinite or not a number, and null pointers, are left out; a warning says how many.
/// Equal calls give byte-equal files. One object must not be used by two threads at once.
///
/// A triangle takes less than 64 bytes; writing takes about half a microsecond each.
class KIVO_API Visualizer2 {
public:
    /// Opens the file for writing, which empties it. The name is also the title of the page.
    explicit Visualizer2(const std::string& filename);
    /// Writes the file if that was not done yet.
    ~Visualizer2();
    Visualizer2(const Visualizer2&) = delete;
    Visualizer2& operator=(const Visualizer2&) = delete;

    /// \name Adding objects
    /// Throws `KivoException` once the file was written. Lines have the width of their colour; its fill flag
    /// fills triangles and circles and marks the ends of segments. Points are crosses of a fixed size.
    /// \{

    /// A cross.
    void addObject(const Point2& point, const Color& color);
    /// A line, with crosses at its ends when the colour fills.
    void addObject(const Segment2& segment, const Color& color);
    /// As its segment.
    void addObject(const Edge2& edge, const Color& color);
    /// Its outline, or its area when the colour fills.
    void addObject(const Triangle2& triangle, const Color& color);
    /// Its outline, or its area when the colour fills.
    void addObject(const Circle2& circle, const Color& color);
    /// Its text, in the colour's red, green and blue.
    void addObject(const Label& label, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Point2>& vPoints, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Point2*>& vPoints, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Segment2>& vSegments, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Edge2>& vEdges, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Triangle2>& vTriangles, const Color& color);
    /// Each of them.
    void addObject(const std::vector<Triangle2*>& vTriangles, const Color& color);
    /// \}

    /// Adds a line of text to the block above the drawing. It holds ten lines of up to 120 characters: longer
    /// ones are cut, further ones refused with a warning.
    void addHeaderLine(const std::string& text);

    /// Writes and closes the file. A second call gives a warning and has no effect.
    void writeFile();

private:
    class Drawing;
    void checkOpen() const;
    template<class Element>
    void addEach(const std::vector<Element>& vElements, const Color& color);

    std::unique_ptr<Drawing> pDrawing;
};

} // namespace TESK_KIVO2D
