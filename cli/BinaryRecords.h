#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace cli {

// One kind of the library's binary files: records of one or two points.
struct BinaryKind {
    const char* noun;      // of a record: "point"
    std::int32_t type2;    // type of files with points x, y
    std::int32_t type3;    // type of files with points x, y, z
    std::size_t numPoints; // in a record
};

// A binary file whose length is exactly what its header claims. Throws `FileError` for any other.
class BinaryRecords {
public:
    BinaryRecords(const std::string& filename_, const BinaryKind& kind_);

    std::size_t size() const { return numRecords; }
    // Doubles of each point: 2 or 3.
    std::size_t getDimension() const { return dimension; }
    // Copies the numbers of a record, getDimension() for each of its points. Throws `FileError` unless all
    // are finite.
    void get(std::size_t record, double* aValues) const;

private:
    const std::string& filename;
    BinaryKind kind;
    std::string content;
    std::size_t numRecords = 0;
    std::size_t dimension = 2;
};

} // namespace cli
