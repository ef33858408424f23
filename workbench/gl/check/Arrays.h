// SPDX-License-Identifier: Apache-2.0
// The arrays that a text declares.
#pragma once

#include "workbench/gl/check/Brackets.h"
#include "workbench/gl/check/Token.h"

#include <cstdint>
#include <span>
#include <vector>

namespace workbench {

/// An array, or a structure of more than one member, where it is declared.
struct DeclaredArray {
    std::size_t at = 0; ///< its name among the tokens
    std::uint64_t elements = 0;
};

/// The arrays of a text. Matrices count as their columns, structures as the sum of their members, several
/// dimensions as their product. Objects to one that is larger than shaderlimit allows, and to sizes that
/// cannot be computed: in declarations only, an index is free.
[[nodiscard]] std::vector<DeclaredArray> declaredArrays(std::span<const Token> tokens,
                                                        const Brackets& brackets);

} // namespace workbench
