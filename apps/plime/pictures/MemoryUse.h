// SPDX-License-Identifier: Apache-2.0
// What --memory is needed for.
#pragma once

#include <cstdint>
#include <string>

namespace workbench {

/// The program with its libraries, as measured, and what a software driver of OpenGL adds.
inline constexpr std::uint64_t ProgramBytes = std::uint64_t{32} << 20, OpenGLBytes = std::uint64_t{88} << 20;
/// The libraries behind all formats but EXR, PNG and JPEG.
inline constexpr std::uint64_t CodecBytes = std::uint64_t{120} << 20;
/// Rows that are decoded ahead.
inline constexpr std::uint64_t ReadAheadBytes = std::uint64_t{32} << 20;

/// What is held while a picture of that width is written to that file, whatever else is done: the program, and
/// the writer's rows before and after compression.
[[nodiscard]] std::uint64_t bytesBesidePixels(bool usesOpenGL, const std::string& output, int width);

/// From now on pixels go back to the system as soon as they are no longer needed.
void giveLargeBlocksBack() noexcept;

/// "12M", rounded up.
[[nodiscard]] std::string megabytesText(std::uint64_t bytes);
/// The failure of work that needs more than --memory allows. Throws Failure(Output).
[[noreturn]] void refuseMemory(const std::string& picture, std::uint64_t needed, std::uint64_t memory);

} // namespace workbench
