// SPDX-License-Identifier: Apache-2.0
// A shader text as tokens, before its preprocessor.
#pragma once

#include <string_view>
#include <vector>

namespace workbench {

/// A word, number or symbol. The text points into the source or to a constant.
struct Token {
    enum class Kind { Word, Number, Symbol };

    std::string_view text;
    Kind kind = Kind::Symbol;
    bool startsLine = false; ///< the first of its line, lines with a backslash at their end counted as one
    bool afterBlank = false; ///< with white space or a comment before it
    int line = 0;            ///< counted from 1

    [[nodiscard]] bool is(std::string_view symbol) const noexcept { return text == symbol; }
    [[nodiscard]] bool isWord() const noexcept { return kind == Kind::Word; }
};

/// Splits a text, without its comments. Objects to bytes that drivers read differently, so that what is
/// checked is what they compile: NUL, a carriage return without line feed, a backslash anywhere but at the
/// end of a line of code with a blank beside it.
[[nodiscard]] std::vector<Token> tokensOf(std::string_view text);

} // namespace workbench
