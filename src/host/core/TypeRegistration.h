// SPDX-License-Identifier: Apache-2.0
// Per-type registrations: once per library and value type, however many modules use the type.
#pragma once

#include "host/core/TypedSlotCreator.h"
#include "host/memory/AutoPtr.h"
#include "host/memory/MemoryException.h"
#include "host/memory/Typename.h"
#include "host/values/VValueCreator.h"

#include <string>

namespace krod {

/// The value creator of T. The first one made registers it and withdraws it with itself; later ones do
/// nothing.
template <class T>
class ValueRegistration {
public:
    /// [load] Throws MemoryException, and has registered nothing then.
    ValueRegistration() try {
        if (registered) return;
        creator = std::make_unique<TypedValueCreator<T>>();
        VValueCreator::registerCreator(Typename<T>(), *creator);
        registered = true;
    } catch (const std::bad_alloc&) {
        throw MemoryException();
    }

private:
    static inline constinit bool registered = false;
    AutoPtr<VValueCreator> creator; // withdraws itself
};

/// The value creator and the typed-slot creator of T, in this order; withdrawn in reverse.
template <class T, class SlotCreator>
class SlotRegistration {
public:
    /// [load] Throws MemoryException, and has registered nothing then.
    SlotRegistration() try {
        if (registered) return;
        creator = std::make_unique<SlotCreator>();
        typeName = Typename<T>();
        TypedSlotCreator::registerTypedSlotCreator(typeid(T), *creator, typeName);
        registered = true;
    } catch (const std::bad_alloc&) {
        throw MemoryException();
    }
    SlotRegistration(const SlotRegistration&) = delete;
    SlotRegistration& operator=(const SlotRegistration&) = delete;
    /// [load] Needs no memory.
    ~SlotRegistration() {
        if (creator) TypedSlotCreator::unregisterTypedSlotCreator(typeid(T), typeName);
    }

    /// [any] Whether the type was ever registered. Never cleared: slots that are destroyed while the library
    /// unloads ask.
    [[nodiscard]] static bool wasRegistered() noexcept { return registered; }

private:
    static inline constinit bool registered = false;
    ValueRegistration<T> value;
    AutoPtr<TypedSlotCreator> creator;
    std::string typeName; // kept, so that withdrawing needs no memory
};

} // namespace krod
