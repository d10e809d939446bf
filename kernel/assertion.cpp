#include "kernel/assertion.h"

#include "KivoException.h"
#include "kernel/messages.h"

#include <cstring>
#include <string>

namespace TESK_KIVO2D {

void failAssertion(const char* conditionText, const char* file, int line) {
    const char* slash = std::strrchr(file, '/');
    const std::string source = slash != nullptr ? slash + 1 : file;
    // One text, so that no other thread's line comes between the two.
    reportError("Kivo, ", "Condition [ " + std::string(conditionText) + " failed ]\n      " + source + ":" +
                              std::to_string(line));
    throw KivoException();
}

} // namespace TESK_KIVO2D
