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

} // namespace krod
