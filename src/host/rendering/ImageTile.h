// SPDX-License-Identifier: Apache-2.0
// A piece of a picture.
#pragma once

#include "host/memory/Chunk.h"
#include "host/memory/StrongPtr.h"
#include "host/rendering/RGBAHalf.h"

namespace krod {

extern template class KROD_API Chunk<RGBAHalf>;

/// A rectangle of pixels: rows from top to bottom, pixels from left to right. The store may be absent, and
/// may hold elements of any kind.
class KROD_API ImageTile {
public:
    /// [host · shares] Width and height in pixels.
    ImageTile(int width, int height, StrongPtr<ChunkBase> store) noexcept;
    ~ImageTile();

    /// [host] Size in pixels.
    [[nodiscard]] int width() const noexcept { return columns; }
    [[nodiscard]] int height() const noexcept { return rows; }
    /// [host · shares] The pixel store, or an empty reference.
    [[nodiscard]] const StrongPtr<ChunkBase>& store() const noexcept { return chunk; }

private:
    int columns;
    int rows;
    StrongPtr<ChunkBase> chunk;
};

} // namespace krod
