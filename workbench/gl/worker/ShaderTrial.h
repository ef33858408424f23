// SPDX-License-Identifier: Apache-2.0
// What is tried in the worker, and how it travels there.
#pragma once

#include <string>
#include <vector>

namespace workbench {

/// A program to be tried.
struct ShaderTrial {
    std::string gpu = "auto"; ///< GpuChoice::text of the session that wants it
    bool strict = false;      ///< without shims
    std::string vertexText, fragmentText;
};

/// What the worker answers; it says nothing if the program has ended it.
enum class TrialAnswer : char {
    Drawn = 'd',    ///< compiled, and drew tiles; the nanoseconds of a pixel follow
    Refused = 'r',  ///< the compiler refused it with words
    NoOpenGL = 'n', ///< nothing was tried; a sentence follows
};

/// The trial as bytes: every text with its length in front.
[[nodiscard]] std::vector<char> packed(const ShaderTrial& trial);
/// The trial of those bytes. Throws std::runtime_error when they are none.
[[nodiscard]] ShaderTrial unpacked(const std::vector<char>& bytes);

} // namespace workbench
