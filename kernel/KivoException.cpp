#include "KivoException.h"

#include "MsgBase.h"

namespace TESK_KIVO2D {

KivoException::~KivoException() = default;

const char* KivoException::what() const noexcept {
    return "\n  KIVO EXCEPTION due to a bug _or_ wrong usage of Kivo. If you think it is a \n"
           "  bug then please report this incident and it will be fixed quickly: the issue tracker of the "
           "project";
}

// Here rather than in a header, so that the vtable has one home.
MsgBase::~MsgBase() = default;

} // namespace TESK_KIVO2D
