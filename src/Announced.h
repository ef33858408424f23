// SPDX-License-Identifier: Apache-2.0
// Modules that are announced with all their texts and parameters before they can do their work.
#pragma once

#include <stdexcept>
#include <string>

namespace plime {

/// [host] Says that a module cannot do something in this version. Throws std::runtime_error.
[[noreturn]] inline void announcedOnly(const std::string& key, const std::string& action) {
    throw std::runtime_error(
        key + ": cannot " + action +
        " in this version — its parameters are complete, its picture is still to come. Choose "
        "another module");
}

} // namespace plime
