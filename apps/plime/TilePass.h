// SPDX-License-Identifier: Apache-2.0
// Tile processors over whole pictures.
#pragma once

#include "apps/plime/TileChain.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// The side of the largest picture that shader processors take as one tile, unless --tile says otherwise.
inline constexpr int LargestShaderTile = 4096;
/// Rows of a strip for chains that work on the processor.
inline constexpr int StripRows = 256;

/// Throws Failure(Output) when a picture is larger than one tile for shader processors. `tile` is what --tile
/// asks for, `driverLimit` the largest texture; the advice names what would do.
void requireOneTile(const std::string& picture, int width, int height, std::optional<int> tile,
                    int driverLimit);

/// Throws Failure(Output) when a picture needs more than --memory allows: so many pixels are held at once,
/// each of them twice, before and after.
void requireMemory(const std::string& picture, std::uint64_t pixels, std::uint64_t memory);

/// Runs the chain over rows of pixels as one tile, in place.
void processRows(const TileChain& chain, std::vector<krod::RGBAHalf>& pixels, int width, int height);

} // namespace workbench
