// SPDX-License-Identifier: Apache-2.0
// Creators that can fill an input.
#pragma once

#include "host/core/VCreatorBase.h"
#include "host/memory/HostAllocated.h"

#include <typeinfo>

namespace krod {

/// What the registry of input creators holds: a creator whose objects have an output of one type.
class KROD_API VInputCreatorBase : public HostAllocated {
public:
    VInputCreatorBase() = default;
    VInputCreatorBase(const VInputCreatorBase&) = delete;
    VInputCreatorBase& operator=(const VInputCreatorBase&) = delete;
    virtual ~VInputCreatorBase();
    /// [host · borrows] The creator to ask for a source.
    [[nodiscard]] virtual VCreatorBase& creator() const noexcept = 0;
};

/// [load · borrows] Offers a creator wherever an input of that type needs a source. Returns whether the host
/// accepts.
KROD_API bool registerVInput(const std::type_info& inputType, VInputCreatorBase& creator);
/// [load · borrows] Withdraws it. Harmless for a creator that was refused.
KROD_API void unregisterVInput(const std::type_info& inputType, VInputCreatorBase& creator) noexcept;

} // namespace krod
