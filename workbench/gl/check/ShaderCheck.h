// SPDX-License-Identifier: Apache-2.0
// Shader texts that drivers do not survive: short texts that make their compilers crash or work for hours.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// The limits of a text. Below them llvmpipe compiles each hostile pattern within seconds; above, some crash.
namespace shaderlimit {
inline constexpr std::uint64_t Bytes = 65536;
inline constexpr std::uint64_t Tokens = 20000;          ///< every one that the preprocessor handles
inline constexpr std::uint64_t Nesting = 256;           ///< of brackets, macros and conditions
inline constexpr std::uint64_t VariableElements = 1024; ///< of one variable, uniform or parameter
inline constexpr std::uint64_t ConstantElements = 2048; ///< of one constant with an initialiser
inline constexpr std::uint64_t AllElements = 8192;      ///< of all arrays, those of functions once per call
inline constexpr std::uint64_t ListElements = 2048;     ///< between one pair of brackets
inline constexpr std::uint64_t Calls = 10000;           ///< of own functions, all of them inlined
inline constexpr std::uint64_t Operators = 4096;        ///< in one expression
inline constexpr std::uint64_t DriverNames = 4;         ///< that conditions ask for
} // namespace shaderlimit

/// Why a text is not given to a driver.
struct ShaderObjection {
    int line = 0;            ///< counted from 1; 0 stands for the whole text
    std::string what;        ///< continues "line 3 …": "declares \"a\" with too many elements"
    std::uint64_t limit = 0; ///< 0 with `got` 0: what it does is not allowed at all
    std::uint64_t got = 0;   ///< where counting stops early, the first number above the limit
};

/// The first reason against a GLSL text as a module composes it, without shims; nothing for a harmless one.
/// It judges what a text costs, not whether it is right: wrong GLSL passes, and the compiler refuses it. Takes
/// macros, conditions, constants, arrays, structures and calls into account. Conditions that depend on the
/// driver are tried both ways. What cannot be computed (an array size from a function, pasted tokens) is
/// refused. Time and memory grow with the length of the text only. Any bytes are accepted.
[[nodiscard]] std::optional<ShaderObjection> objectionTo(std::string_view text);

} // namespace workbench
