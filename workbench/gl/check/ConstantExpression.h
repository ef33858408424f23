// SPDX-License-Identifier: Apache-2.0
// Integers that a text computes from constants.
#pragma once

#include "workbench/gl/check/Token.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace workbench {

/// The value of a name, or nothing where it has none that is known.
using NameValue = std::function<std::optional<std::int64_t>(std::string_view)>;

/// The value of an expression of integers, names, brackets and the operators of C without assignments and
/// "?:". Nothing for any other text, for a division by zero, where a value leaves 32 bits on the way, and where one
/// is negative among numbers that may be unsigned: there it becomes a large one.
[[nodiscard]] std::optional<std::int64_t> computed(std::span<const Token> expression,
                                                   const NameValue& valueOf);

} // namespace workbench
