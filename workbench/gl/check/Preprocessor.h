// SPDX-License-Identifier: Apache-2.0
// What a shader's preprocessor makes of a text, within limits.
#pragma once

#include "workbench/gl/check/Token.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace workbench {

/// The names of the driver that the conditions of a text ask for: GL_ARB_…, GL_ES, __VERSION__. A text is
/// preprocessed once for every choice of which of them exist.
class DriverNames {
public:
    /// Whether the name exists in the present choice. A name that is asked for the first time does not.
    /// Objects to more than shaderlimit::DriverNames of them.
    bool exists(std::string_view name, int line);
    /// Goes on to the next choice; false after the last one.
    bool next();

private:
    std::vector<std::string_view> names;
    unsigned choice = 0; // one bit per name
};

/// The tokens that are left after all directives and macros, with the lines of the text that they come from.
/// Objects to what no preprocessor should be asked to do. `text` must outlive the result.
[[nodiscard]] std::vector<Token> preprocessed(const std::vector<Token>& text, DriverNames& driver);

} // namespace workbench
