#include "output/elementFiles.h"

#include "kernel/messages.h"
#include "output/InputFile.h"

#include <new>
#include <stdexcept>
#include <string>

namespace TESK_KIVO2D {
namespace {

constexpr std::uint64_t headerSize = 12;
constexpr std::uint64_t tolerableGap = std::uint64_t{1} << 20;
constexpr std::size_t elementsPerBlock = 4096;

template<class Value>
Value readOrZero(InputFile& file) {
    Value value = 0;
    return file.read(&value, sizeof value) == sizeof value ? value : 0;
}

// A product that could overflow is avoided.
bool isBeyondGap(std::uint64_t numElements, std::uint64_t numBytes, std::size_t elementSize) {
    return numElements > (numBytes + tolerableGap) / elementSize;
}

enum class Outcome { COMPLETE, UNREADABLE, LYING_HEADER };

Outcome readElements(InputFile& file, std::uint64_t numElements, std::size_t valuesPerElement,
                     const std::function<void(const double*, std::size_t)>& append) {
    const std::size_t elementSize = valuesPerElement * sizeof(double);
    std::vector<double> vBlock(elementsPerBlock * valuesPerElement);
    bool bAtEnd = false;
    while (numElements > 0) {
        const auto numNext = static_cast<std::size_t>(std::min<std::uint64_t>(numElements, elementsPerBlock));
        const std::size_t numBytes = bAtEnd ? 0 : file.read(vBlock.data(), numNext * elementSize);
        if (numBytes < numNext * elementSize) {
            if (file.hasFailed()) return Outcome::UNREADABLE;
            // The size may be unknown before, or have changed since.
            if (!bAtEnd && isBeyondGap(numElements, numBytes, elementSize)) return Outcome::LYING_HEADER;
            bAtEnd = true;
            const auto numWhole = static_cast<std::ptrdiff_t>(numBytes / sizeof(double));
            std::fill(vBlock.begin() + numWhole, vBlock.end(), 0.0);
        }
        append(vBlock.data(), numNext);
        numElements -= numNext;
    }
    return Outcome::COMPLETE;
}

Outcome readOpenFile(InputFile& file, std::uint64_t numElements, std::size_t dimension,
                     const BinaryFileKind& kind, const ElementConsumer& consumer) {
    const std::size_t valuesPerElement = dimension * kind.pointsPerElement;
    if (const auto size = file.getSize()) {
        const std::uint64_t numBytes = *size < headerSize ? 0 : *size - headerSize;
        if (isBeyondGap(numElements, numBytes, valuesPerElement * sizeof(double)))
            return Outcome::LYING_HEADER;
        consumer.reserve(static_cast<std::size_t>(numElements));
    }
    return readElements(file, numElements, valuesPerElement, [&](const double* pValues, std::size_t num) {
        consumer.append(pValues, num, dimension);
    });
}

} // namespace

bool complainAboutFile(const char* filename, const char* text) {
    printText(std::string(filename == nullptr ? "" : filename) + text + "\n");
    return false;
}

bool readBinaryElements(const char* filename, const BinaryFileKind& kind, const ElementConsumer& consumer) {
    InputFile file(filename);
    if (!file.isOpen()) return complainAboutFile(filename, " can't be read");
    const auto type = readOrZero<std::int32_t>(file);
    if (type != kind.type2D && type != kind.type3D) {
        const std::string text = kind.textBeforeWrongType + std::to_string(type) + kind.textAfterWrongType;
        return complainAboutFile(filename, text.c_str());
    }
    const auto numElements = readOrZero<std::uint64_t>(file);
    Outcome outcome = Outcome::LYING_HEADER;
    try {
        outcome = readOpenFile(file, numElements, type == kind.type2D ? 2 : 3, kind, consumer);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    switch (outcome) {
    case Outcome::COMPLETE:
        return true;
    case Outcome::UNREADABLE:
        return complainAboutFile(filename, " can't be read");
    case Outcome::LYING_HEADER:
        break;
    }
    return complainAboutFile(filename, " claims more elements than it holds");
}

} // namespace TESK_KIVO2D
