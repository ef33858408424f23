// SPDX-License-Identifier: Apache-2.0
// The base of everything that the host counts references of.
#pragma once

#include "host/memory/HostAllocated.h"
#include "host/memory/ReferenceCount.h"

namespace krod {

/// A reference-counted object. It is made on the heap and deleted with its last strong reference, or it
/// stands in static storage (see keepInStaticStorage). The host knows every living one, so that it can refuse
/// to unload a library whose objects are still held.
class KROD_API ReferenceBase : public HostAllocated {
public:
    ReferenceBase(const ReferenceBase&) = delete;
    ReferenceBase& operator=(const ReferenceBase&) = delete;

    /// [any] Called once, just before the last strong reference deletes the object. Does nothing. First
    /// virtual slot.
    virtual void onUnreferenced() noexcept;
    /// [any] Expires every weak reference. Strong references that are still held become empty.
    virtual ~ReferenceBase();

    /// [any · borrows] The shared count.
    [[nodiscard]] ReferenceCount& referenceCount() const noexcept { return *count; }

protected:
    /// [any] Starts with no strong reference. Do not take a strong reference to an object inside its own
    /// constructor.
    ReferenceBase();
    /// [load] Declares that the object is not on the heap: a count of zero deletes nothing, and the object
    /// counts itself as one strong reference until its destructor runs. Call once, in a constructor.
    void keepInStaticStorage() noexcept;

private:
    ReferenceCount* count;
};

} // namespace krod
