// SPDX-License-Identifier: Apache-2.0
// The list of the counts of all living objects.
#pragma once

#include "host/memory/ReferenceCount.h"

#include <atomic>
#include <cstddef>
#include <mutex>

namespace krod {

class ReferenceBase;

/// Strings the counts of all living objects together, in the order of construction. Made with the first object
/// and never destroyed, so that objects may come and go before and after every other static object.
class ReferenceCensus {
public:
    /// Enters an object that begins to live. Needs no memory.
    static void enter(ReferenceCount& count) noexcept;
    /// Takes out an object that stops to live.
    static void leave(ReferenceCount& count) noexcept;
    /// The number of entries.
    [[nodiscard]] static std::size_t size() noexcept;

    /// Calls `visitor(object, strongReferences, inStaticStorage)` for every entry. Everybody who makes or
    /// deletes an object waits meanwhile, so the visitor must do neither.
    template <class Visitor>
    static void visit(Visitor visitor) {
        const std::lock_guard lock(list().mutex);
        for (const ReferenceCount* count = list().first; count; count = count->next)
            visitor(static_cast<const ReferenceBase*>(count->object), count->strongReferences(),
                    count->inStaticStorage.load(std::memory_order_relaxed));
    }

private:
    struct List {
        std::mutex mutex;
        ReferenceCount* first = nullptr;
        ReferenceCount* last = nullptr;
        std::size_t entries = 0;
    };
    static List& list() noexcept;
};

} // namespace krod
