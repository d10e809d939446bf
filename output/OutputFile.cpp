#include "output/OutputFile.h"

namespace TESK_KIVO2D {

OutputFile::OutputFile(const char* filename)
    : pFile(filename == nullptr ? nullptr : std::fopen(filename, "wb")), pBuffer(new char[bufferSize]) {}

OutputFile::OutputFile(const std::string& filename)
    : OutputFile(filename.find('\0') == std::string::npos ? filename.c_str() : nullptr) {}

OutputFile::~OutputFile() { close(); }

bool OutputFile::close() {
    if (pFile == nullptr) return false;
    flush();
    // A full disk may show only here.
    if (std::fclose(pFile) != 0) bFailed = true;
    pFile = nullptr;
    return !bFailed;
}

void OutputFile::bytes(const char* pBytes, std::size_t num) {
    while (num > 0) {
        if (numBuffered == bufferSize) flush();
        const std::size_t room = bufferSize - numBuffered;
        const std::size_t part = num < room ? num : room;
        std::memcpy(pBuffer.get() + numBuffered, pBytes, part);
        numBuffered += part;
        pBytes += part;
        num -= part;
    }
}

void OutputFile::flush() {
    if (pFile != nullptr && !bFailed && std::fwrite(pBuffer.get(), 1, numBuffered, pFile) != numBuffered)
        bFailed = true;
    numBuffered = 0;
}

} // namespace TESK_KIVO2D
