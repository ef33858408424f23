// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/TilePass.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <utility>

namespace workbench {

void requireOneTile(const std::string& picture, int width, int height, std::optional<int> tile,
                    int driverLimit) {
    const int limit = std::min(tile.value_or(LargestShaderTile), driverLimit);
    if (width <= limit && height <= limit) return;
    const auto size = [](int w, int h) { return std::to_string(w) + 'x' + std::to_string(h); };
    const int side = std::max(width, height);
    const std::string advice =
        side <= driverLimit ? "Ask for --tile " + std::to_string(side) + ", or make the picture smaller"
                            : "Make the picture smaller, or use processors that work without a shader";
    throw Failure(Fault::Output, {picture,
                                  "is larger than one tile, which shader processors need",
                                  "at most " + size(limit, limit) + " pixels",
                                  size(width, height),
                                  advice,
                                  {}});
}

void requireMemory(const std::string& picture, std::uint64_t pixels, std::uint64_t memory) {
    const std::uint64_t needed = pixels * 2 * sizeof(krod::RGBAHalf);
    if (needed <= memory) return;
    const std::uint64_t megabyte = 1U << 20U;
    const std::string wanted = std::to_string((needed + megabyte - 1) / megabyte) + 'M';
    throw Failure(Fault::Output, {picture,
                                  "needs more memory than is allowed",
                                  memory < megabyte ? "at most " + std::to_string(memory) + " bytes"
                                                    : "at most " + std::to_string(memory / megabyte) + 'M',
                                  wanted,
                                  "Allow it with --memory " + wanted + ", or ask for less",
                                  {}});
}

void processRows(const TileChain& chain, std::vector<krod::RGBAHalf>& pixels, int width, int height) {
    const krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> store(
        new krod::Chunk<krod::RGBAHalf>(std::move(pixels)));
    krod::ImageTile tile(width, height, store);
    chain.process(tile);
    pixels.assign(store->data(), store->data() + store->elements());
}

} // namespace workbench
