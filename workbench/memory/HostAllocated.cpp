// SPDX-License-Identifier: Apache-2.0
#include "host/memory/HostAllocated.h"

#include "host/memory/MemoryException.h"

namespace krod {

void* HostAllocated::operator new(std::size_t bytes) {
    void* const memory = ::operator new(bytes, std::nothrow);
    if (!memory) throw MemoryException();
    return memory;
}

void HostAllocated::operator delete(void* memory) noexcept { ::operator delete(memory); }

} // namespace krod
