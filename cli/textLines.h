#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// A piece of a file of any kind for a message: short and printable.
std::string inQuotes(std::string_view text);

// The whole content of a file. Throws `FileError`.
std::string readWholeFile(const std::string& filename);

// The lines of a text file that hold anything, cut into fields at white space. Empty lines and lines that
// start with '#' are passed over, but counted.
class TextLines {
public:
    // When bTrailingComments is set a '#' ends a line wherever it stands.
    TextLines(const std::string& filename_, const std::string& content_, bool bTrailingComments_ = false);

    // Moves to the next line; false at the end.
    bool next();

    const std::vector<std::string_view>& getFields() const { return vFields; }

    // The finite number in a field of the current line. No locale takes part.
    double toDouble(std::size_t field) const;
    // A whole number that fits an int.
    int toInt(std::size_t field) const;

    // Throws `FileError` with the number of the current line.
    [[noreturn]] void fail(const std::string& text) const;

private:
    void split(std::string_view line);

    const std::string& filename;
    const std::string& content;
    bool bTrailingComments;
    std::size_t position = 0;
    std::size_t lineNumber = 0;
    std::vector<std::string_view> vFields;
};

} // namespace cli
