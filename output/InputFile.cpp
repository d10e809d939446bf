#include "output/InputFile.h"

#include <filesystem>
#include <system_error>

namespace TESK_KIVO2D {

InputFile::InputFile(const char* filename) {
    std::error_code error;
    if (filename == nullptr || std::filesystem::is_directory(filename, error)) return;
    pFile = std::fopen(filename, "rb");
    if (pFile == nullptr || !std::filesystem::is_regular_file(filename, error)) return;
    const std::uintmax_t bytes = std::filesystem::file_size(filename, error);
    if (!error) size = bytes;
}

InputFile::~InputFile() {
    if (pFile != nullptr) std::fclose(pFile);
}

std::size_t InputFile::read(void* pBytes, std::size_t num) {
    std::size_t done = 0;
    while (done < num) {
        const std::size_t part = std::fread(static_cast<char*>(pBytes) + done, 1, num - done, pFile);
        if (part == 0) break;
        done += part;
    }
    return done;
}

} // namespace TESK_KIVO2D
