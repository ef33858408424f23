// SPDX-License-Identifier: Apache-2.0
// Makers of parameters, found by value type.
#pragma once

#include "host/core/VParameter.h"
#include "host/memory/HostAllocated.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <typeinfo>

namespace krod {

/// Makes free-standing parameters of one type. The registry holds one entry per registration, the host's own
/// first.
class KROD_API TypedSlotCreator : public HostAllocated {
public:
    TypedSlotCreator() noexcept = default;
    TypedSlotCreator(const TypedSlotCreator&) = delete;
    TypedSlotCreator& operator=(const TypedSlotCreator&) = delete;
    virtual ~TypedSlotCreator();

    /// [host · gives] A parameter of the type with a value-initialised value.
    [[nodiscard]] virtual StrongPtr<VParameter> create(const std::string& name) const = 0;

    /// [load · borrows the creator] Registers a creator for a type.
    static void registerTypedSlotCreator(const std::type_info& type, TypedSlotCreator& creator,
                                         const std::string& typeName);
    /// [load] Withdraws the entry that the library being unloaded has under this type and name: the newest
    /// such entry where no library is known to be unloading. Entries of other libraries stay.
    static void unregisterTypedSlotCreator(const std::type_info& type, const std::string& typeName) noexcept;
    /// [any · borrows] The first creator registered for a type, or null.
    [[nodiscard]] static const TypedSlotCreator* find(const std::type_info& type) noexcept;

    /// Counts destroyed slots whose type was registered.
    static std::atomic<std::int64_t> InternalTypeCreatorAccessory;
};

} // namespace krod
