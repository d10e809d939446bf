#pragma once

#include <stdexcept>
#include <string>

namespace cli {

// What the command returns to the shell.
enum ExitCode {
    EXIT_CODE_OK = 0,
    EXIT_CODE_BAD_INPUT = 1,
    EXIT_CODE_USAGE = 2,
    EXIT_CODE_FAULTS = 3,       // segments that meet where they should not
    EXIT_CODE_INTERRUPTED = 130 // as shells say it
};

// A file that cannot be read, understood or written. The text begins with the file's name.
class FileError : public std::runtime_error {
public:
    FileError(const std::string& filename, const std::string& text) : runtime_error(filename + ": " + text) {}
    FileError(const std::string& filename, std::size_t lineNumber, const std::string& text)
        : runtime_error(filename + ": line " + std::to_string(lineNumber) + ": " + text) {}
};

// A call that asks for something that the command does not offer.
class UsageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

} // namespace cli
