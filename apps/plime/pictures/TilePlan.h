// SPDX-License-Identifier: Apache-2.0
// How a picture is cut for tile processors.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace workbench {

/// The side of the largest picture that shader processors take as one tile, unless --tile says otherwise or one of
/// them works with the place in the tile.
inline constexpr int LargestWholeTile = 4096;
/// The side of the largest tile of a picture that is cut.
inline constexpr int LargestCutTile = 2048;
/// The pixels that a tile sees around what is kept of it, unless --overlap says otherwise.
inline constexpr int UsualOverlap = 64;
/// Rows of a strip for chains that work without a shader: as many as are decoded at once.
inline constexpr int StripRows = 64;

/// What people ask of tiles.
struct TilingWish {
    std::optional<int> side;    ///< --tile
    std::optional<int> overlap; ///< --overlap

    /// Tiles of exactly this size, as a saved network has them; `side` counts first.
    struct Exact {
        int width = 0, height = 0, overlap = 0;
    };
    std::optional<Exact> exact = {};
};

/// What is to be cut, and how much room there is.
struct TilingTask {
    std::string picture; ///< for messages
    int width = 0, height = 0;
    std::uint64_t extraBytes = 0;  ///< of the additional channels, per pixel
    std::uint64_t memory = 0;      ///< --memory
    std::optional<int> shaderSide; ///< the driver's largest texture; missing: no shader takes part
    bool isDrawn = false;          ///< it comes from a drawing, not from a file
    std::uint64_t otherBytes = 0;  ///< held beside its pixels and counted in the memory
    bool dependsOnPlace = false; ///< a shader works with the place in the tile, and is right in one tile only
};

/// What the whole picture as one tile would need.
[[nodiscard]] std::uint64_t bytesForWhole(const TilingTask& task);
/// The failure of an overlap that is not less than half of a tile. Throws Failure(Usage).
[[noreturn]] void refuseOverlap(const std::string& who, const std::string& tile, int margin);

/// A stretch of rows or columns: what is kept, and what the processors see.
struct TileSpan {
    int begin = 0, length = 0;         ///< kept
    int seenBegin = 0, seenLength = 0; ///< the kept ones among them
};

/// Tiles that all have the same size, so that modules which measure in shares of a tile do the same in each
/// of them. Windows at the edges of the picture lie further inside instead of being smaller.
class TilePlan {
public:
    /// Without a shader: strips of StripRows rows in the whole width, fewer where the memory asks for it.
    /// With one: the picture as one tile while it is no larger than --tile and the driver allow and the
    /// memory suffices, else tiles of at most LargestCutTile a side; exact tiles whatever the picture. Throws
    /// Failure(Usage) for an overlap that leaves nothing of a tile, Failure(Output) when no tile fits into
    /// the memory.
    TilePlan(const TilingTask& task, const TilingWish& wish);

    [[nodiscard]] int columns() const noexcept { return across.count; }
    [[nodiscard]] int rows() const noexcept { return down.count; }
    [[nodiscard]] std::int64_t count() const noexcept { return std::int64_t{across.count} * down.count; }
    /// What the processors see at once, in pixels. The last strip of a plan without a shader may be lower.
    [[nodiscard]] int tileWidth() const noexcept { return across.seen; }
    [[nodiscard]] int tileHeight() const noexcept { return down.seen; }
    [[nodiscard]] int overlap() const noexcept { return margin; }

    [[nodiscard]] TileSpan column(int index) const { return across.span(index, margin); }
    [[nodiscard]] TileSpan row(int index) const { return down.span(index, margin); }

private:
    /// One side of the picture.
    struct Side {
        int total = 0, count = 1, seen = 0;
        bool isEven = true; ///< parts of equal length; else of `seen`, and a rest
        [[nodiscard]] TileSpan span(int index, int around) const;
    };

    static Side whole(int total) { return {total, 1, total, true}; }
    static Side cut(int total, int side, int margin);
    void cutIntoStrips(const TilingTask& task);
    void cutForShaders(const TilingTask& task, const TilingWish& wish);
    void cutExactly(const TilingTask& task, const TilingWish::Exact& tile);

    Side across, down;
    int margin = 0;
};

} // namespace workbench
