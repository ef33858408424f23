// SPDX-License-Identifier: Apache-2.0
// JSON with the line of everything in it.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace workbench {

/// One value of a JSON text.
struct JsonTree {
    enum class Kind { Null, Truth, Number, Text, List, Object };

    Kind kind = Kind::Null;
    int line = 0; ///< on which it ends; of lists and objects, begins
    bool truth = false;
    double number = 0;
    std::string text = {}; ///< of a text its contents, of a number its digits
    std::vector<JsonTree> items = {};
    std::vector<std::pair<std::string, JsonTree>> members = {}; ///< each name once

    [[nodiscard]] const JsonTree* member(std::string_view name) const noexcept;
    /// For messages: `"text"`, `1.5`, `true`, `a list` …, long texts cut.
    [[nodiscard]] std::string shown() const;
};

/// Reads a whole text within the limits of networks. Throws Failure(Network): what is no JSON, is nested too deep,
/// holds a member twice, or a text that is too long or has control characters other than line ends and tabs.
[[nodiscard]] JsonTree parseJson(std::string_view text, const std::string& who);

} // namespace workbench
