// SPDX-License-Identifier: Apache-2.0
// One pass over a shader text: which version it asks for and which names it uses.
#pragma once

#include <cstddef>
#include <set>
#include <string_view>

namespace workbench {

/// What choosing shims needs to know of a text. The names point into the text.
struct TextScan {
    int version = 0;         ///< the number in its #version line; 0 without one
    std::size_t headEnd = 0; ///< offset behind the last #version or #extension line; 0 without one
    std::set<std::string_view> identifiers; ///< whole words outside of comments
    std::set<std::string_view>
        declarations; ///< those that directly follow another word: the text's own names
};

/// Reads the whole text, also what the preprocessor would leave out. Any bytes are accepted. The text must
/// outlive the result.
[[nodiscard]] TextScan scanText(std::string_view text);

} // namespace workbench
