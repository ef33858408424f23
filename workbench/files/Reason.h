// SPDX-License-Identifier: Apache-2.0
// A library's own words inside one of our sentences.
#pragma once

#include <cstddef>
#include <string>

namespace workbench {

/// A library may quote a whole file in its words: what is longer is cut.
inline constexpr std::size_t LongestReason = 300;

/// The text on one line, of a length for reading, without control characters, and at its end without a question and
/// full stops.
[[nodiscard]] inline std::string reasonText(std::string text) {
    if (text.ends_with('?') && text.rfind(". ") != std::string::npos) text.resize(text.rfind(". "));
    if (text.size() > LongestReason) {
        std::size_t end = LongestReason;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
            --end; // between two characters
        text.replace(end, std::string::npos, "…");
    }
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
    while (text.ends_with('.') || text.ends_with(' ')) text.pop_back();
    return text;
}

} // namespace workbench
