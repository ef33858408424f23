// SPDX-License-Identifier: Apache-2.0
#include "host/rendering/ImageTile.h"

#include <utility>

namespace krod {

template class Chunk<RGBAHalf>;

ImageTile::ImageTile(int width, int height, StrongPtr<ChunkBase> store) noexcept
    : columns(width), rows(height), chunk(std::move(store)) {}

ImageTile::~ImageTile() = default;

} // namespace krod
