#pragma once

#include <charconv>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>

namespace TESK_KIVO2D {

// Writes a value as one item: precision and flags are those of the stream, a width pads the whole text, and
// the locale changes nothing (a decimal comma could not be told from the comma between two coordinates).
template<class Compose>
std::ostream& writeAsOneItem(std::ostream& stream, Compose compose) {
    std::ostringstream text;
    text.copyfmt(stream);
    text.width(0);
    text.imbue(std::locale::classic());
    compose(text);
    return stream << text.str();
}

// The number with six significant digits, as a stream in its default state writes it, in every locale.
inline std::string numberText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
    return std::string(buffer, result.ptr);
}

} // namespace TESK_KIVO2D
