#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cli {

// Standard output for reports of any length. Throws `std::runtime_error` when not every byte arrived.
class StandardOutput {
public:
    StandardOutput& operator<<(std::string_view text) {
        buffer += text;
        if (buffer.size() > BUFFER_SIZE) flush();
        return *this;
    }
    void flush() {
        const bool bWritten = std::fwrite(buffer.data(), 1, buffer.size(), stdout) == buffer.size();
        buffer.clear();
        if (std::fflush(stdout) != 0 || !bWritten) throw std::runtime_error("the report can't be written");
    }

private:
    static constexpr std::size_t BUFFER_SIZE = 1 << 16;
    std::string buffer;
};

} // namespace cli
