// SPDX-License-Identifier: Apache-2.0
// The census of reference-counted objects.
#pragma once

#include "host/memory/ReferenceBase.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// A living reference-counted object.
struct LivingObject {
    const krod::ReferenceBase* object;
    std::string typeName; ///< the host's name of its class
    std::int64_t strongReferences;
    bool inStaticStorage;
};

/// Every living object whose code satisfies the predicate: it is asked with the address of the object's
/// virtual table, which lies in the library of its class. Objects that other threads make meanwhile may be
/// missing.
[[nodiscard]] KROD_API std::vector<LivingObject>
livingObjects(const std::function<bool(const void* virtualTable)>& ofInterest);

/// The number of all living objects.
[[nodiscard]] KROD_API std::size_t livingObjectCount() noexcept;

} // namespace workbench
