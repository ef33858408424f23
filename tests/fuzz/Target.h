// SPDX-License-Identifier: Apache-2.0
// What every fuzz target is: one function that takes any bytes. clang's libFuzzer calls it, or Replay.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Runs one input, always to the same end. Ends the process where something does not hold.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// The input as text, which it may not be.
[[nodiscard]] inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process with a sentence unless `holds`.
inline void require(bool holds, const char* sentence) {
    if (holds) return;
    std::fprintf(stderr, "This does not hold: %s\n", sentence);
    std::abort();
}

/// Whether a message is one line for people: not empty and without control characters.
[[nodiscard]] inline bool isOneLine(std::string_view message) {
    for (const char c : message)
        if (static_cast<unsigned char>(c) < ' ' || c == 127) return false;
    return !message.empty();
}

} // namespace fuzz
