#include "cli/outputFiles.h"

#include "cli/errors.h"
#include "cli/formats.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace cli {

namespace {

[[noreturn]] void fail(const std::string& filename, const std::string& reason) {
    throw FileError(filename, "can't be written: " + reason);
}

void checkFolder(const std::string& name) {
    std::error_code error;
    if (std::filesystem::is_directory(name, error)) {
        if (access(name.c_str(), W_OK | X_OK) != 0) fail(name, std::strerror(errno));
        return;
    }
    // Without the slash at the end: behind it nothing is made, and that counts as a success.
    const std::string withoutSlash = name.substr(0, name.find_last_not_of('/') + 1);
    const bool bCreated = std::filesystem::create_directory(withoutSlash, error);
    if (!bCreated) fail(name, error ? error.message() : "it is no folder");
    std::filesystem::remove(withoutSlash, error);
}

} // namespace

void checkWritable(const std::string& filename) {
    if (formatOf(filename) == FORMAT_SCENE) return checkFolder(filename);
    std::error_code error;
    const bool bExisted = std::filesystem::exists(std::filesystem::symlink_status(filename, error));
    std::FILE* const pFile = std::fopen(filename.c_str(), "ab");
    if (pFile == nullptr) fail(filename, std::strerror(errno));
    std::fclose(pFile);
    if (!bExisted) std::filesystem::remove(filename, error);
}

void checkNotInput(const std::string& output, const std::vector<std::string>& vInputs) {
    for (const std::string& input : vInputs) {
        std::error_code notThere;
        if (std::filesystem::equivalent(input, output, notThere))
            throw UsageError(output + ": the output would overwrite the input");
    }
}

void removeUnfinished(const std::string& filename) {
    std::error_code error;
    if (std::filesystem::is_regular_file(std::filesystem::symlink_status(filename, error))) {
        std::filesystem::remove(filename, error);
    }
}

} // namespace cli
