// SPDX-License-Identifier: Apache-2.0
// The calls that a loaded library makes to others.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace workbench::validate {

/// Lets a loaded library call other functions than those it was linked with: `instead` is asked for each
/// function that it takes from elsewhere, and answers with the address of another one, or null to leave it.
/// Other libraries still call what they called. Throws std::runtime_error for a library that is not loaded.
void redirectCalls(const std::string& library, const std::function<void*(std::string_view name)>& instead);

} // namespace workbench::validate
