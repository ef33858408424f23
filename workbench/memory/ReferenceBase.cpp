// SPDX-License-Identifier: Apache-2.0
#include "host/memory/ReferenceBase.h"

#include "host/memory/MemoryException.h"
#include "workbench/memory/ReferenceCensus.h"

#include <new>

namespace krod {

ReferenceBase::ReferenceBase() : count(new (std::nothrow) ReferenceCount(*this)) {
    if (!count) throw MemoryException();
    ReferenceCensus::enter(*count);
}

ReferenceBase::~ReferenceBase() {
    ReferenceCensus::leave(*count);
    count->expire();
}

void ReferenceBase::onUnreferenced() noexcept {}

void ReferenceBase::keepInStaticStorage() noexcept {
    count->inStaticStorage.store(true, std::memory_order_relaxed);
    count->retain();
}

void* ReferenceBase::operator new(std::size_t bytes) {
    void* const memory = ::operator new(bytes, std::nothrow);
    if (!memory) throw MemoryException();
    return memory;
}

void ReferenceBase::operator delete(void* memory) noexcept { ::operator delete(memory); }

} // namespace krod
