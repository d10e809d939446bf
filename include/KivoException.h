#pragma once

#include "export.h"

#include <exception>

namespace TESK_KIVO2D {

/// The one exception type of the library. It is thrown when an internal condition fails, after a message
/// that names the condition, its source and its line has been written. The triangulation that was at work
/// may be inconsistent afterwards and should be discarded.
class KIVO_API KivoException : public std::exception {
public:
    KivoException() noexcept = default;
    KivoException(const KivoException&) noexcept = default;
    KivoException& operator=(const KivoException&) noexcept = default;
    ~KivoException() override;

    /// A fixed text with the support contact.
    const char* what() const noexcept override;
};

} // namespace TESK_KIVO2D
