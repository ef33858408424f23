// SPDX-License-Identifier: Apache-2.0
// Makers of value objects, found by the name of the value type.
#pragma once

#include "host/memory/HostAllocated.h"
#include "host/values/VValueBase.h"

#include <string>

namespace krod {

/// Makes values of one type. The registry holds one entry per registration, the host's own first; a creator
/// that is destroyed withdraws its own entries and nobody else's.
class KROD_API VValueCreator : public HostAllocated {
public:
    VValueCreator() noexcept = default;
    VValueCreator(const VValueCreator&) = delete;
    VValueCreator& operator=(const VValueCreator&) = delete;
    /// [load] Withdraws the creator.
    virtual ~VValueCreator();

    /// [any · gives] A value of the type, value-initialised.
    [[nodiscard]] virtual StrongPtr<VValueBase> create() const = 0;

    /// [load · copies the name, borrows the creator] Registers a creator under the host's type name.
    static void registerCreator(const std::string& typeName, VValueCreator& creator);
    /// [any · borrows] The first creator registered under that name, or null.
    [[nodiscard]] static const VValueCreator* find(const std::string& typeName) noexcept;
};

/// Makes values of type T. Instantiated in host libraries only.
template <class T>
class TypedValueCreator : public VValueCreator {
public:
    [[nodiscard]] StrongPtr<VValueBase> create() const override { return makeValue(T{}); }
};

extern template class KROD_API TypedValueCreator<int>;
extern template class KROD_API TypedValueCreator<double>;
extern template class KROD_API TypedValueCreator<bool>;
extern template class KROD_API TypedValueCreator<std::string>;
extern template class KROD_API TypedValueCreator<FlagList>;
extern template class KROD_API TypedValueCreator<FixedArray<double, 2>>;

} // namespace krod
