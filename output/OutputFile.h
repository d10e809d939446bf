#pragma once

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace TESK_KIVO2D {

// A file being written, in blocks. Failures are kept until `close`, which reports them all; writing to a file
// that could not be opened does nothing. The locale changes nothing.
class OutputFile {
public:
    explicit OutputFile(const char* filename);
    // A name that holds a null character opens nothing: the system would take what precedes it for the name.
    explicit OutputFile(const std::string& filename);
    // Closes; whatever fails then is not reported.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool isOpen() const { return pFile != nullptr; }

    void text(std::string_view chars) { bytes(chars.data(), chars.size()); }
    void character(char c) {
        makeRoom(1);
        pBuffer[numBuffered++] = c;
    }
    // As a stream of that precision writes it in the default float format.
    void number(double value, int significantDigits) {
        makeRoom(maxNumberLength);
        char* const pStart = pBuffer.get() + numBuffered;
        const auto result = std::to_chars(pStart, pStart + maxNumberLength, value, std::chars_format::general,
                                          significantDigits);
        numBuffered += static_cast<std::size_t>(result.ptr - pStart);
    }
    void integer(long long value) {
        makeRoom(maxNumberLength);
        char* const pStart = pBuffer.get() + numBuffered;
        numBuffered +=
            static_cast<std::size_t>(std::to_chars(pStart, pStart + maxNumberLength, value).ptr - pStart);
    }
    // The value as it lies in memory.
    template<class Value>
    void raw(const Value& value) {
        makeRoom(sizeof value);
        std::memcpy(pBuffer.get() + numBuffered, &value, sizeof value);
        numBuffered += sizeof value;
    }

    // Writes what is left and closes. True when the file was open and every byte arrived.
    bool close();

private:
    // 20 significant digits, sign, point, "e-308" and up to four zeros behind the point need less.
    static constexpr std::size_t maxNumberLength = 40;
    static constexpr std::size_t bufferSize = std::size_t{1} << 16;

    void bytes(const char* pBytes, std::size_t num);
    void makeRoom(std::size_t num) {
        if (numBuffered + num > bufferSize) flush();
    }
    void flush();

    std::FILE* pFile;
    std::unique_ptr<char[]> pBuffer;
    std::size_t numBuffered = 0;
    bool bFailed = false;
};

} // namespace TESK_KIVO2D
