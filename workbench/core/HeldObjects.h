// SPDX-License-Identifier: Apache-2.0
// What of a library somebody still holds.
#pragma once

#include "host/core/VObject.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace workbench {

/// Counts the objects of a library that would outlive it, by the host's name of their class. Changes nothing.
///
/// `modules` are the living module objects that the library's creators delete at unload. What their outputs
/// hold goes with them, as long as nobody else holds it too: neither the object, nor the output's value.
/// Creators stand in static storage and go with the library.
[[nodiscard]] std::map<std::string, std::size_t>
heldObjects(const std::function<bool(const void* virtualTable)>& isOfLibrary,
            const std::vector<krod::StrongPtr<krod::VObject>>& modules);

} // namespace workbench
