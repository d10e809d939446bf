#pragma once

#include "cli/errors.h"
#include "cli/outputFiles.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace cli {

// A buffered file that reports every failure, that of closing included: a full disk may show only there. A
// file that was not closed is taken away.
// Numbers are the shortest that read back to the same value.
class OutputFile {
public:
    explicit OutputFile(const std::string& filename_)
        : filename(filename_), pFile(std::fopen(filename_.c_str(), "wb")) {
        if (pFile == nullptr) fail();
        buffer.reserve(BUFFER_SIZE + 1024);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() {
        if (pFile != nullptr) std::fclose(pFile);
        if (!bComplete) removeUnfinished(filename);
    }

    OutputFile& operator<<(std::string_view text) {
        buffer += text;
        if (buffer.size() > BUFFER_SIZE) flush();
        return *this;
    }
    OutputFile& operator<<(double value) { return addNumber(value); }
    OutputFile& operator<<(std::size_t value) { return addNumber(value); }
    OutputFile& operator<<(int value) { return addNumber(value); }
    template<class Value>
    void raw(Value value) {
        *this << std::string_view(reinterpret_cast<const char*>(&value), sizeof value);
    }

    void close() {
        flush();
        std::FILE* const pClosing = pFile;
        pFile = nullptr;
        if (std::fclose(pClosing) != 0) fail();
        bComplete = true;
    }

private:
    static constexpr std::size_t BUFFER_SIZE = 1 << 20;

    template<class Value>
    OutputFile& addNumber(Value value) {
        char aText[40];
        const auto result = std::to_chars(aText, aText + sizeof aText, value);
        return *this << std::string_view(aText, static_cast<std::size_t>(result.ptr - aText));
    }
    void flush() {
        if (std::fwrite(buffer.data(), 1, buffer.size(), pFile) != buffer.size()) fail();
        buffer.clear();
    }
    [[noreturn]] void fail() const {
        throw FileError(filename, "can't be written: " + std::string(std::strerror(errno)));
    }

    const std::string& filename;
    std::FILE* pFile;
    bool bComplete = false;
    std::string buffer;
};

} // namespace cli
