#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

namespace TESK_KIVO2D {

// A file being read in blocks that the caller provides.
class InputFile {
public:
    // A directory is not openable.
    explicit InputFile(const char* filename);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool isOpen() const { return pFile != nullptr; }
    // Number of bytes read; fewer than asked for only at the end of the file or on a failure.
    std::size_t read(void* pBytes, std::size_t num);
    // True once the system refused to read on, which is not the end of the file.
    bool hasFailed() const { return std::ferror(pFile) != 0; }
    // Nothing for a pipe or a device.
    std::optional<std::uint64_t> getSize() const { return size; }

private:
    std::FILE* pFile = nullptr;
    std::optional<std::uint64_t> size;
};

} // namespace TESK_KIVO2D
