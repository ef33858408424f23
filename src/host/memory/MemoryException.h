// SPDX-License-Identifier: Apache-2.0
// What the memory library throws.
#pragma once

#include "host/Export.h"

#include <new>
#include <stdexcept>
#include <string>

namespace krod {

/// Raised when memory cannot be allocated.
class KROD_API MemoryException : public std::bad_alloc {
public:
    ~MemoryException() override;
    [[nodiscard]] const char* what() const noexcept override;
};

/// Raised by checkPointer. The text names the place.
class KROD_API PointerException : public std::logic_error {
public:
    /// [any · copies]
    explicit PointerException(const std::string& location);
    ~PointerException() override;
};

/// [any] Throws PointerException with the location text.
[[noreturn]] KROD_API void pointerCheckFailed(const char* location);

/// [any · borrows] Demands that a pointer or reference is not empty. Throws PointerException.
template <class Pointer>
void checkPointer(const Pointer& pointer, const char* location) {
    if (!pointer) pointerCheckFailed(location);
}

} // namespace krod
