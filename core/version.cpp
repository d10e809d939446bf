#include "functions.h"

namespace TESK_KIVO2D {

int getMajorVersionNumber() { return 1; }
int getMinorVersionNumber() { return 60; }
int getRevisionNumber() { return 244; }

bool isRelease() {
#ifdef NDEBUG
    return true;
#else
    return false;
#endif
}

std::string getKivo2DVersion() {
    return std::string("Kivo 2D, ") + (isRelease() ? "RELEASE" : "DEBUG") + ", v" +
           std::to_string(getMajorVersionNumber()) + "." + std::to_string(getMinorVersionNumber()) + "." +
           std::to_string(getRevisionNumber());
}

} // namespace TESK_KIVO2D
