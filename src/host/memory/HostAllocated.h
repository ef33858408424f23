// SPDX-License-Identifier: Apache-2.0
// Allocation by the host.
#pragma once

#include "host/Export.h"

#include <cstddef>

namespace krod {

/// Base of host types that plug-ins make on the heap: memory that cannot be had is a MemoryException.
class KROD_API HostAllocated {
public:
    /// [any · gives] Throws MemoryException.
    static void* operator new(std::size_t bytes);
    /// [any · gives]
    static void operator delete(void* memory) noexcept;

protected:
    HostAllocated() = default;
    ~HostAllocated() = default;
};

} // namespace krod
