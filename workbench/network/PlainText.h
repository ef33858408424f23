// SPDX-License-Identifier: Apache-2.0
// Texts as networks hold them.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace workbench {

/// Of a member of a JSON object, in bytes.
inline constexpr std::size_t LongestMember = 256;
/// What programs may hold between words.
inline constexpr std::string_view White = "\n\r\t\f\v";

/// Bytes that no network holds.
struct TextFlaw {
    std::size_t at, size;
};

/// The first bytes of a text that are no UTF-8, or a control character other than blanks and line ends.
[[nodiscard]] std::optional<TextFlaw> flawOf(std::string_view text) noexcept;

} // namespace workbench
