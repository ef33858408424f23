// SPDX-License-Identifier: Apache-2.0
// What a module takes in besides its parameters.
#pragma once

namespace krod {

/// Marks a module as a sink. Two spellings are in use: VSink<Module, void> takes objects only,
/// VSink<double, Module> has a second input of type double besides. Whether outputs of that type are taken is
/// for the module's accept to say.
template <class First, class Second>
class VSink {
protected:
    VSink() = default;
    ~VSink() = default;
};

} // namespace krod
