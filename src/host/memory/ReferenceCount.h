// SPDX-License-Identifier: Apache-2.0
// The count that all references to one object share. It outlives the object, so that a late release is
// harmless.
#pragma once

#include "host/Export.h"

#include <atomic>
#include <cstdint>

namespace krod {

class ReferenceBase;

/// Atomic strong and weak counts of one object. Made by ReferenceBase, freed with the last reference of
/// either kind.
class KROD_API ReferenceCount {
public:
    ReferenceCount(const ReferenceCount&) = delete;
    ReferenceCount& operator=(const ReferenceCount&) = delete;

    /// [any] Adds a strong reference to an object that is known to live.
    void retain() noexcept;
    /// [any] Adds a strong reference unless the object is gone, being destroyed or never had one. Says
    /// whether it did.
    [[nodiscard]] bool tryRetain() noexcept;
    /// [any] Takes a strong reference away; the last one deletes the object unless it stands in static
    /// storage.
    void release() noexcept;
    /// [any] Adds or takes away a weak reference.
    void retainWeak() noexcept;
    void releaseWeak() noexcept;
    /// [any] False once the object's destruction has begun, also when somebody deleted it under living
    /// references.
    [[nodiscard]] bool alive() const noexcept { return living.load(std::memory_order_acquire); }
    /// [any] The number of strong references; an object in static storage counts itself as one.
    [[nodiscard]] std::int64_t strongReferences() const noexcept;

private:
    friend class ReferenceBase;
    friend class ReferenceCensus;
    explicit ReferenceCount(ReferenceBase& object) noexcept : object(&object) {}
    ~ReferenceCount() = default;
    void destroy() noexcept;
    void expire() noexcept;

    std::atomic<std::int64_t> strong{0};
    std::atomic<std::int64_t> weak{1}; // the object holds one, and all strong references together hold one
    std::atomic<bool> living{true};
    std::atomic<bool> inStaticStorage{false}; // then the object holds a strong reference to itself
    ReferenceBase* object;
    ReferenceCount* previous = nullptr; // neighbours in the census
    ReferenceCount* next = nullptr;
};

} // namespace krod
