#include "output/NumberScanner.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <locale>
#include <sstream>
#include <string>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isPartOfNumber(char c) { return isDigit(c) || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E'; }

// Too large fails, too small does not: the conversion from text calls both out of range, the stream does not.
std::optional<double> readAsStream(const char* pBegin, const char* pEnd) {
    std::istringstream stream(std::string(pBegin, pEnd));
    stream.imbue(std::locale::classic());
    double value = 0;
    if (stream >> value) return value;
    return std::nullopt;
}

} // namespace

std::optional<double> NumberScanner::next() {
    if (!skipSpace()) return std::nullopt;
    const char* const pLast = findNumberEnd();
    const char* const pBegin = pNext;
    const char* pDigits = pBegin;
    if (pDigits != pLast && (*pDigits == '+' || *pDigits == '-')) ++pDigits;
    // Keeps out a second sign, and the words for values that are not finite.
    if (pDigits == pLast || !(isDigit(*pDigits) || *pDigits == '.')) return std::nullopt;
    double value = 0;
    const auto result = std::from_chars(*pBegin == '+' ? pDigits : pBegin, pLast, value);
    pNext = result.ptr;
    if (result.ec == std::errc::result_out_of_range) return readAsStream(pBegin, result.ptr);
    if (result.ec != std::errc()) return std::nullopt;
    // An exponent without digits: the stream takes it for a part of the number and refuses the whole.
    const auto isExponent = [](char c) { return c == 'e' || c == 'E'; };
    if (pNext != pLast && isExponent(*pNext) && std::none_of(pBegin, pNext, isExponent)) return std::nullopt;
    return value;
}

bool NumberScanner::skipSpace() {
    for (;;) {
        while (pNext != pEnd && isSpace(*pNext))
            ++pNext;
        if (pNext != pEnd) return true;
        if (!refill()) return false;
    }
}

// A number must lie in the buffer as a whole to be converted.
const char* NumberScanner::findNumberEnd() {
    std::ptrdiff_t length = 0;
    for (;;) {
        while (pNext + length != pEnd && isPartOfNumber(pNext[length]))
            ++length;
        if (pNext + length != pEnd || !refill()) return pNext + length;
    }
}

// Keeps what is not consumed yet, moves it to the front and appends a block of the file.
bool NumberScanner::refill() {
    const auto numKept = static_cast<std::size_t>(pEnd - pNext);
    if (numKept > 0) std::memmove(vBuffer.data(), pNext, numKept);
    vBuffer.resize(std::max(vBuffer.size(), 2 * std::max(numKept, blockSize)));
    const std::size_t numRead = file.read(vBuffer.data() + numKept, vBuffer.size() - numKept);
    pNext = vBuffer.data();
    pEnd = pNext + numKept + numRead;
    return numRead > 0;
}

} // namespace TESK_KIVO2D
