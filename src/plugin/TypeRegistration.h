// SPDX-License-Identifier: Apache-2.0
// Per-type registrations: once per library and value type, however many modules use the type.
#pragma once

#include "host/core/TypedSlotCreator.h"
#include "host/memory/AutoPtr.h"
#include "host/memory/Typename.h"
#include "host/values/VValueCreator.h"

namespace krod {

/// The value creator of T. The first one made registers it and withdraws it with itself; later ones do
/// nothing.
template <class T>
class ValueRegistration {
public:
    /// [load]
    ValueRegistration() {
        if (registered) return;
        registered = true;
        creator = std::make_unique<TypedValueCreator<T>>();
        VValueCreator::registerCreator(Typename<T>(), *creator);
    }

private:
    static inline constinit bool registered = false;
    AutoPtr<VValueCreator> creator; // withdraws itself
};

/// The value creator and the typed-slot creator of T, in this order; withdrawn in reverse.
template <class T, class SlotCreator>
class SlotRegistration {
public:
    /// [load]
    SlotRegistration() {
        if (registered) return;
        registered = true;
        creator = std::make_unique<SlotCreator>();
        TypedSlotCreator::registerTypedSlotCreator(typeid(T), *creator, Typename<T>());
    }
    SlotRegistration(const SlotRegistration&) = delete;
    SlotRegistration& operator=(const SlotRegistration&) = delete;
    /// [load]
    ~SlotRegistration() {
        if (creator) TypedSlotCreator::unregisterTypedSlotCreator(typeid(T), Typename<T>());
    }

    /// Whether the type was ever registered. Never cleared: slots that are destroyed while the library
    /// unloads ask.
    [[nodiscard]] static bool wasRegistered() noexcept { return registered; }

private:
    static inline constinit bool registered = false;
    ValueRegistration<T> value;
    AutoPtr<TypedSlotCreator> creator;
};

} // namespace krod
