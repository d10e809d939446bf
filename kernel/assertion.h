#pragma once

namespace TESK_KIVO2D {

// Reports "Condition [ <text> failed ]" with the source name and line, then throws KivoException.
[[noreturn]] void failAssertion(const char* conditionText, const char* file, int line);

} // namespace TESK_KIVO2D

// Always on, throws. The text is what is printed: it is passed as text so that no formatter and no renaming
// ever changes a printed condition.
#define KIVO_ASSERT(condition, text)                                                                         \
    ((condition) ? static_cast<void>(0) : ::TESK_KIVO2D::failAssertion((text), __FILE__, __LINE__))
