// SPDX-License-Identifier: Apache-2.0
// How the rules of the check end it.
#pragma once

#include "workbench/gl/check/ShaderCheck.h"

#include <string>
#include <utility>

namespace workbench {

/// Ends the check of a text. `objectionTo` catches the objection.
[[noreturn]] inline void object(int line, std::string what, std::uint64_t limit = 0, std::uint64_t got = 0) {
    throw ShaderObjection{line, std::move(what), limit, got};
}

/// A name of the text for a message: in quotes, and not longer than a line.
[[nodiscard]] inline std::string quotedName(std::string_view name) {
    constexpr std::size_t Longest = 40;
    return '"' + std::string(name.substr(0, Longest)) + (name.size() > Longest ? "…\"" : "\"");
}

/// The product, or the greatest number where that does not hold it.
[[nodiscard]] constexpr std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) noexcept {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? UINT64_MAX : product;
}

/// The sum, or the greatest number where that does not hold it.
[[nodiscard]] constexpr std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) noexcept {
    std::uint64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? UINT64_MAX : sum;
}

} // namespace workbench
