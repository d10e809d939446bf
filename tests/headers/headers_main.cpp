#include <Kivo_2D.h>

static_assert(__cplusplus < 202002L, "the headers are to be tried as C++17");

int main() { return TESK_KIVO2D::getMajorVersionNumber() == 1 ? 0 : 1; }
