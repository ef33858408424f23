// SPDX-License-Identifier: Apache-2.0
// Which bracket closes which, and how many elements lie between them.
#pragma once

#include "workbench/gl/check/Token.h"

#include <cstdint>
#include <span>
#include <vector>

namespace workbench {

/// Knows the brackets of a text. Those that nothing closes end with the text.
class Brackets {
public:
    /// Objects to more than shaderlimit::Nesting of them within each other and to more than
    /// shaderlimit::ListElements elements between two.
    explicit Brackets(std::span<const Token> tokens);

    /// The bracket that closes the one at `open`, or the end of the text.
    [[nodiscard]] std::size_t closing(std::size_t open) const { return pairs[open].closing; }
    /// The elements behind the bracket at `open`: commas of its own, plus one; 0 for empty brackets.
    [[nodiscard]] std::uint64_t elements(std::size_t open) const { return pairs[open].elements; }

private:
    struct Pair {
        std::size_t closing = 0;
        std::uint64_t elements = 0;
    };

    std::vector<Pair> pairs; // one per token
};

[[nodiscard]] inline bool opensBracket(const Token& token) noexcept {
    return token.is("(") || token.is("[") || token.is("{");
}

[[nodiscard]] inline bool closesBracket(const Token& token) noexcept {
    return token.is(")") || token.is("]") || token.is("}");
}

} // namespace workbench
