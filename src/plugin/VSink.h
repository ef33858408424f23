// SPDX-License-Identifier: Apache-2.0
// What a module takes in besides its parameters.
#pragma once

namespace krod {

/// Marks a module as a sink. Two spellings are in use and mean what they say: VSink<Module, void> takes
/// objects only, VSink<double, Module> takes outputs of type double too (see the module's accept).
template <class First, class Second>
class VSink {
protected:
    VSink() = default;
    ~VSink() = default;
};

} // namespace krod
