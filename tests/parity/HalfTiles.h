// SPDX-License-Identifier: Apache-2.0
// What the tests of processors share that work on the halves of a tile without OpenGL.
#pragma once

#include "tests/support/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace parity {

using half_float::half;
using krod::RGBAHalf;

/// How many halves there are.
inline constexpr std::uint32_t Patterns = 65536;

inline std::uint16_t bitsOf(half h) { return std::bit_cast<std::uint16_t>(h); }
inline half halfOf(std::uint32_t bits) { return std::bit_cast<half>(static_cast<std::uint16_t>(bits)); }

using Store = krod::StrongPtr<krod::Chunk<RGBAHalf>>;
inline Store storeOf(std::vector<RGBAHalf> pixels) {
    return Store(new krod::Chunk<RGBAHalf>(std::move(pixels)));
}

/// A test of one such module. Every check compares bit for bit.
class HalfTiles : public testing::Test {
protected:
    /// What has to come of a colour, as bits.
    using Function = std::uint16_t (*)(half);

    /// `line` is what the processor writes to standard output for each tile, with its line end.
    HalfTiles(const std::string& key, std::string line, Function required)
        : line(std::move(line)), bitsFor(required), module(plugin.make(key)) {}

    /// Processes a tile of one row and gives what the processor wrote to standard output.
    std::string process(int width, const krod::StrongPtr<krod::ChunkBase>& store);

    /// All patterns in red, green and blue, side by side with other ones.
    void expectRequiredColours();
    void expectEveryAlphaUntouched();
    /// Sizes below, at and above a cache line of pixels, with pixels behind the end that are not the tile's.
    void expectItsOwnPixelsOnly();
    void expectOneLinePerTile();
    void expectSilenceWithoutStore();
    void expectSilenceOverStoresOfAnotherKind();

    const std::string line;

private:
    void expectPixel(const RGBAHalf& before, const RGBAHalf& after, const std::string& place) const;

    Function bitsFor;
    krod::VValuePool pool;
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module;
    krod::StrongPtr<krod::ImageTileProcessor> processor = support::processorOf(*module);
};

} // namespace parity
