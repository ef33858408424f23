// SPDX-License-Identifier: Apache-2.0
// Characters of UTF-8 texts.
#pragma once

#include <cstddef>
#include <string_view>

namespace workbench {

/// The length in bytes of the well-formed code point at the start of a text that is not empty, or 0.
[[nodiscard]] inline std::size_t codePointLength(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF5   ? 0
                               : first >= 0xF0 ? 4
                               : first >= 0xE0 ? 3
                               : first >= 0xC2 ? 2
                                               : 0;
    if (length == 0 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool noCharacter = (first == 0xED && byte(1) >= 0xA0) || (first == 0xF4 && byte(1) >= 0x90);
    return overlong || noCharacter ? 0 : length;
}

} // namespace workbench
