#include "cli/BinaryRecords.h"

#include "cli/errors.h"
#include "cli/textLines.h"

#include <cmath>
#include <cstring>

namespace cli {

namespace {

constexpr std::size_t HEADER_SIZE = 12;

template<class Value>
Value takeAt(const std::string& content, std::size_t offset) {
    Value value;
    std::memcpy(&value, content.data() + offset, sizeof value);
    return value;
}

} // namespace

BinaryRecords::BinaryRecords(const std::string& filename_, const BinaryKind& kind_)
    : filename(filename_), kind(kind_), content(readWholeFile(filename_)) {
    if (content.size() < HEADER_SIZE) throw FileError(filename, "ends inside its header");
    const std::string noun = kind.noun;
    const auto type = takeAt<std::int32_t>(content, 0);
    if (type != kind.type2 && type != kind.type3) {
        throw FileError(filename, "is of type " + std::to_string(type) + ", not a " + noun + " file (" +
                                      std::to_string(kind.type2) + " or " + std::to_string(kind.type3) + ")");
    }
    dimension = type == kind.type2 ? 2 : 3;
    const auto claimed = takeAt<std::uint64_t>(content, 4);
    const std::size_t recordSize = kind.numPoints * dimension * sizeof(double);
    const std::size_t held = (content.size() - HEADER_SIZE) / recordSize;
    const std::string claim = std::to_string(claimed) + " " + noun + "s";
    if (claimed > held) {
        throw FileError(filename, "is truncated: " + std::to_string(held) + " of " + claim + " are there");
    }
    if (content.size() != HEADER_SIZE + claimed * recordSize) {
        throw FileError(filename, "holds more bytes than its " + claim + " need");
    }
    numRecords = claimed;
}

void BinaryRecords::get(std::size_t record, double* aValues) const {
    const std::size_t count = kind.numPoints * dimension;
    std::memcpy(aValues, content.data() + HEADER_SIZE + record * count * sizeof(double),
                count * sizeof(double));
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isfinite(aValues[i])) continue;
        throw FileError(filename, std::string(kind.noun) + " " + std::to_string(record + 1) +
                                      " holds a number that is not finite");
    }
}

} // namespace cli
