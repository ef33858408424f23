// SPDX-License-Identifier: Apache-2.0
// Texts of a few lines that make compilers crash or work for hours.
#pragma once

#include <string>
#include <vector>

namespace workbench::test {

struct HostileText {
    std::string name; ///< letters and digits only
    std::string text;
};

/// About forty of them; the check has to refuse every one.
[[nodiscard]] const std::vector<HostileText>& hostileTexts();
/// The one of that name. Throws std::out_of_range.
[[nodiscard]] const std::string& hostileText(const std::string& name);

/// A fragment shader of those lines in front of main, and that expression as its colour.
[[nodiscard]] std::string shader(const std::string& before, const std::string& colour,
                                 const std::string& statements = "");
/// The text so many times.
[[nodiscard]] std::string repeated(const std::string& text, int count);
/// Macros of which each holds the one before twice, so that M<depth> has 2^depth terms.
[[nodiscard]] std::string doublingMacros(int depth);
/// Functions of which each calls the one before so many times: f1 makes that many calls, f<depth> the most.
[[nodiscard]] std::string callingFunctions(int depth, int times);

} // namespace workbench::test
