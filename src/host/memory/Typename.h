// SPDX-License-Identifier: Apache-2.0
// Type names for messages and registrations.
#pragma once

#include "host/Export.h"

#include <string>
#include <typeinfo>

namespace krod {

/// [any · gives] The host's name of a type: without blanks, without the host's own namespace and without the
/// mark of unit-local scopes; the standard text string is "string". Example: "FixedArray<double,2>". For
/// people and for registrations by name; equal names do not mean equal types.
[[nodiscard]] KROD_API std::string typenameOf(const std::type_info& type);

/// [any · gives] The host's name of T.
template <class T>
[[nodiscard]] std::string Typename() {
    return typenameOf(typeid(T));
}

} // namespace krod
