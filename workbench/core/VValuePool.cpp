// SPDX-License-Identifier: Apache-2.0
#include "host/core/VValuePool.h"

#include "host/memory/MemoryException.h"

#include <utility>

namespace krod {

VValuePool::VValuePool() = default;

VValuePool::~VValuePool() = default;

void VValuePool::set(const VParameter& parameter, StrongPtr<VValueBase> value) {
    checkPointer(value, "VValuePool::set(value)");
    local[&parameter] = std::move(value);
}

void VValuePool::makeUnreadable(const VParameter& parameter) { local[&parameter] = nullptr; }

} // namespace krod
