// SPDX-License-Identifier: Apache-2.0
// Text for terminals: measured, cut, wrapped, and harmless.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace workbench {

/// The number of columns of a UTF-8 text: one per code point.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// The text followed by blanks up to that many columns; a longer text stays as it is.
[[nodiscard]] std::string padded(std::string_view text, std::size_t columns);

/// The text cut to that many columns, with "…" at its end where something is missing. 0 columns: not cut.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t columns);

/// Every line of the text broken at blanks so that it fits, `indent` blanks before each. Lines that begin
/// with a blank are kept as they are. Ends with a line end, unless the text is empty.
[[nodiscard]] std::string wrapped(std::string_view text, std::size_t columns, std::size_t indent);

/// The text without anything that could move a terminal's cursor: control characters, line ends too, and
/// bytes that are no UTF-8 are written as "\n", "\t" or "\x1b".
[[nodiscard]] std::string printable(std::string_view text);

/// The same, but line ends stay.
[[nodiscard]] std::string printableLines(std::string_view text);

/// The text in lower case; only ASCII letters change.
[[nodiscard]] std::string lowerCase(std::string_view text);

} // namespace workbench
