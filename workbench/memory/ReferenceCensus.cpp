// SPDX-License-Identifier: Apache-2.0
#include "workbench/memory/ReferenceCensus.h"

namespace krod {

constinit std::mutex ReferenceCensus::mutex;
constinit ReferenceCount* ReferenceCensus::first = nullptr;
constinit ReferenceCount* ReferenceCensus::last = nullptr;
constinit std::size_t ReferenceCensus::entries = 0;

void ReferenceCensus::enter(ReferenceCount& count) noexcept {
    const std::lock_guard lock(mutex);
    count.previous = last;
    (last ? last->next : first) = &count;
    last = &count;
    ++entries;
}

void ReferenceCensus::leave(ReferenceCount& count) noexcept {
    const std::lock_guard lock(mutex);
    (count.previous ? count.previous->next : first) = count.next;
    (count.next ? count.next->previous : last) = count.previous;
    --entries;
}

std::size_t ReferenceCensus::size() noexcept {
    const std::lock_guard lock(mutex);
    return entries;
}

} // namespace krod
