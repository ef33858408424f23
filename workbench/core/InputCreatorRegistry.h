// SPDX-License-Identifier: Apache-2.0
// Creators that can fill an input, by the type of the input.
#pragma once

#include "host/core/VInputRegistry.h"
#include "workbench/memory/LibraryScope.h"

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

namespace workbench {

/// The registry behind krod::registerVInput. Type names are copied, so that nothing of a library is kept.
class KROD_API InputCreatorRegistry {
public:
    /// Asked before a creator is accepted.
    using Policy = std::function<bool(const krod::VInputCreatorBase&, const std::string& inputTypeName)>;

    /// The input creators of a type, in the order of registration.
    [[nodiscard]] static std::vector<krod::VInputCreatorBase*> find(const std::type_info& inputType);
    /// The number of all registered input creators.
    [[nodiscard]] static std::size_t count() noexcept;
    /// Sets the policy; an empty one accepts everybody.
    static void setPolicy(Policy policy);
};

} // namespace workbench
