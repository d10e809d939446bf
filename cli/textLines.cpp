#include "cli/textLines.h"

#include "cli/errors.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace cli {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// from_chars knows no plus sign.
std::string_view withoutPlus(std::string_view field) {
    const bool bPlus = field.size() > 1 && field[0] == '+' && field[1] != '-' && field[1] != '+';
    return bPlus ? field.substr(1) : field;
}

} // namespace

std::string inQuotes(std::string_view text) {
    constexpr std::size_t MAX_SHOWN = 40;
    std::string shown = "'";
    for (const char c : text.substr(0, MAX_SHOWN))
        shown += c >= ' ' && c <= '~' ? c : '?';
    return shown + (text.size() > MAX_SHOWN ? "...'" : "'");
}

std::string readWholeFile(const std::string& filename) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(filename.c_str(), "rb"),
                                                               &std::fclose);
    if (!file) throw FileError(filename, "can't be opened: " + std::string(std::strerror(errno)));
    std::string content;
    std::size_t used = 0;
    for (;;) {
        if (used == content.size()) content.resize(used < 65536 ? 65536 : 2 * used);
        const std::size_t got = std::fread(content.data() + used, 1, content.size() - used, file.get());
        used += got;
        if (got == 0) break;
    }
    if (std::ferror(file.get()) != 0) {
        throw FileError(filename, "can't be read: " + std::string(std::strerror(errno)));
    }
    content.resize(used);
    return content;
}

TextLines::TextLines(const std::string& filename_, const std::string& content_, bool bTrailingComments_)
    : filename(filename_), content(content_), bTrailingComments(bTrailingComments_) {
    const bool bByteOrderMark = content.compare(0, 3, "\xEF\xBB\xBF") == 0;
    if (bByteOrderMark) position = 3;
}

bool TextLines::next() {
    while (position < content.size()) {
        const std::size_t end = std::min(content.find('\n', position), content.size());
        split(std::string_view(content).substr(position, end - position));
        position = end + 1;
        ++lineNumber;
        if (!vFields.empty()) return true;
    }
    return false;
}

void TextLines::split(std::string_view line) {
    vFields.clear();
    if (bTrailingComments) line = line.substr(0, line.find('#'));
    const char* p = line.data();
    const char* const pEnd = p + line.size();
    for (;;) {
        while (p != pEnd && isBlank(*p))
            ++p;
        if (p == pEnd) return;
        if (vFields.empty() && *p == '#') return;
        const char* const pStart = p;
        while (p != pEnd && !isBlank(*p))
            ++p;
        vFields.emplace_back(pStart, static_cast<std::size_t>(p - pStart));
    }
}

double TextLines::toDouble(std::size_t field) const {
    const std::string_view text = withoutPlus(vFields[field]);
    double value = 0.0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || pEnd != text.data() + text.size()) {
        fail(inQuotes(vFields[field]) + " is not a number");
    }
    if (error != std::errc()) fail(inQuotes(vFields[field]) + " is out of the range of a double");
    if (!std::isfinite(value)) fail(inQuotes(vFields[field]) + " is not a finite number");
    return value;
}

int TextLines::toInt(std::size_t field) const {
    const std::string_view text = withoutPlus(vFields[field]);
    int value = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || pEnd != text.data() + text.size()) {
        fail(inQuotes(vFields[field]) + " is not a whole number that fits 32 bits");
    }
    return value;
}

void TextLines::fail(const std::string& text) const { throw FileError(filename, lineNumber, text); }

} // namespace cli
