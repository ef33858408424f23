// SPDX-License-Identifier: Apache-2.0
// A library's own words inside one of our sentences.
#pragma once

#include <string>

namespace workbench {

/// The text on one line, without control characters and without full stops at its end.
[[nodiscard]] inline std::string reasonText(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
    while (text.ends_with('.') || text.ends_with(' ')) text.pop_back();
    return text;
}

} // namespace workbench
