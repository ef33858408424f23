// SPDX-License-Identifier: Apache-2.0
// Networks from and to text.
#pragma once

#include "workbench/network/Network.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace workbench {

/// What a network file may hold.
struct NetworkLimits {
    static constexpr std::size_t Bytes = std::size_t{16} << 20;
    static constexpr std::size_t TextBytes = std::size_t{1} << 20; ///< of one text
    static constexpr int Depth = 64;                               ///< of nested braces and brackets
    static constexpr std::size_t Objects = 10'000;
    static constexpr std::size_t Links = 100'000;  ///< inputs, shared parameters, views and their processors
    static constexpr std::size_t Values = 500'000; ///< of JSON, lists and objects too; each takes memory
    static constexpr std::size_t Row = 256;        ///< of objects that take each other
};

/// Reads a network. `who` names the text in messages. The result is complete and consistent in itself: known
/// members only, each name once, every name that is referred to is there, no cycle. Whether creators and
/// parameters exist is not looked at. Throws Failure(Network): "<who>, line <n>: …".
[[nodiscard]] Network networkFromText(std::string_view text, const std::string& who);

/// Reads a file. Throws Failure(Input) where it cannot be read at all, else as networkFromText.
[[nodiscard]] Network readNetwork(const std::filesystem::path& file);

/// Several lines for files, one line for what is kept inside of a picture. Reading a text and writing it
/// again gives the same bytes as writing it first. Throws Failure(Network) for a text or a number that cannot be
/// written as it is: "<object>.<parameter>: cannot be saved as it is …". Nothing is ever replaced.
enum class NetworkLayout { Lines, OneLine };
[[nodiscard]] std::string textOf(const Network& network, NetworkLayout layout = NetworkLayout::Lines);

/// The same, and certainly a text that is read as this network. Throws Failure(Network) for every other network;
/// `who`, unless it is empty, comes before what the sentence is about.
[[nodiscard]] std::string exactTextOf(const Network& network, NetworkLayout layout,
                                      const std::string& who = "");

/// Bytes that differ where networks differ, whatever their texts hold. To compare them by, not to be read.
[[nodiscard]] std::string fingerprintOf(const Network& network);

/// Writes a file, complete or not at all. Throws Failure(Output), and Failure(Network) for a network that could not
/// be read again as it is.
void saveNetwork(const Network& network, const std::filesystem::path& file, bool noClobber = false);

/// The failure of something at a place: "<who>, line <n>: <what> …".
[[noreturn]] void refuseNetwork(const std::string& who, NetworkPlace place, const std::string& what,
                                const std::string& expected = "", const std::string& got = "",
                                const std::string& advice = "");

} // namespace workbench
