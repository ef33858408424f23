// SPDX-License-Identifier: Apache-2.0
#include "workbench/memory/ReferenceCensus.h"

#include <new>

namespace krod {

ReferenceCensus::List& ReferenceCensus::list() noexcept {
    alignas(List) static unsigned char place[sizeof(List)];
    static List& only = *new (place) List;
    return only;
}

void ReferenceCensus::enter(ReferenceCount& count) noexcept {
    List& all = list();
    const std::lock_guard lock(all.mutex);
    count.previous = all.last;
    (all.last ? all.last->next : all.first) = &count;
    all.last = &count;
    ++all.entries;
}

void ReferenceCensus::leave(ReferenceCount& count) noexcept {
    List& all = list();
    const std::lock_guard lock(all.mutex);
    (count.previous ? count.previous->next : all.first) = count.next;
    (count.next ? count.next->previous : all.last) = count.previous;
    --all.entries;
}

std::size_t ReferenceCensus::size() noexcept {
    const std::lock_guard lock(list().mutex);
    return list().entries;
}

} // namespace krod
