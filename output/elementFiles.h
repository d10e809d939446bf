#pragma once

#include "output/OutputFile.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace TESK_KIVO2D {

// What point files and segment files have in common.
//
// A binary file is its type (int32), the number of elements (uint64), and their coordinates as doubles, point
// by point, all in the machine's own layout without padding. Each kind has a type for 2-D and one for 3-D
// coordinates.

struct BinaryFileKind {
    std::int32_t type2D;
    std::int32_t type3D;
    std::size_t pointsPerElement;
    const char* textBeforeWrongType;
    const char* textAfterWrongType;
};

// Where the elements of a file go.
struct ElementConsumer {
    // So many more are expected, as far as that is known before.
    std::function<void(std::size_t numElements)> reserve;
    // The values of consecutive elements; each point has `dimension` of them.
    std::function<void(const double* pValues, std::size_t numElements, std::size_t dimension)> append;
};

// Prints the name, the text and a line end. Returns false, for the caller to pass on.
bool complainAboutFile(const char* filename, const char* text);

// Hands all elements to the consumer. False, after a message, when the file is no such file; the consumer may
// have got elements by then.
//
// What a file is too short to hold is zero: missing elements, their number, the type. But a number of
// elements that needs over a mebibyte more than there is, is no interrupted copy: such a file is refused, and
// so is one whose elements exceed the memory.
bool readBinaryElements(const char* filename, const BinaryFileKind& kind, const ElementConsumer& consumer);

// Appends the elements that makeElement(values, dimension) gives. A failure leaves the vector as it was.
template<class Element, class MakeElement>
bool readElementFile(const char* filename, const BinaryFileKind& kind, std::vector<Element>& vElements,
                     MakeElement makeElement) {
    const std::size_t numBefore = vElements.size();
    ElementConsumer consumer;
    consumer.reserve = [&](std::size_t numElements) { vElements.reserve(numBefore + numElements); };
    consumer.append = [&](const double* pValues, std::size_t numElements, std::size_t dimension) {
        for (std::size_t i = 0; i < numElements; ++i, pValues += dimension * kind.pointsPerElement)
            vElements.push_back(makeElement(pValues, dimension));
    };
    if (readBinaryElements(filename, kind, consumer)) return true;
    vElements.erase(vElements.begin() + static_cast<std::ptrdiff_t>(numBefore), vElements.end());
    return false;
}

// Vectors of elements and of pointers to them are written alike.
template<class Element>
const Element* addressOf(const Element& element) {
    return &element;
}
template<class Element>
const Element* addressOf(Element* pElement) {
    return pElement;
}

// Writes the head, then each element. Null pointers are refused before the file is touched.
template<class Element, class WriteHead, class WriteElement>
bool writeElementFile(const char* filename, const std::vector<Element>& vElements, WriteHead writeHead,
                      WriteElement writeElement) {
    const auto isNull = [](const Element& element) { return addressOf(element) == nullptr; };
    if (std::any_of(vElements.begin(), vElements.end(), isNull))
        return complainAboutFile(filename, " can't be written: null pointer");
    OutputFile file(filename);
    writeHead(file);
    for (const Element& element : vElements)
        writeElement(file, *addressOf(element));
    return file.close() || complainAboutFile(filename, " can't be written");
}

template<class Element, class WriteElement>
bool writeBinaryFile(const char* filename, const BinaryFileKind& kind, const std::vector<Element>& vElements,
                     WriteElement writeElement) {
    const auto writeHead = [&](OutputFile& file) {
        file.raw(kind.type2D);
        file.raw(static_cast<std::uint64_t>(vElements.size()));
    };
    return writeElementFile(filename, vElements, writeHead, writeElement);
}

} // namespace TESK_KIVO2D
