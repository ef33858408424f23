// SPDX-License-Identifier: Apache-2.0
// A scene becomes a picture, tile by tile.
#pragma once

#include "apps/plime/terminal/Progress.h"
#include "workbench/files/Picture.h"
#include "workbench/gl/SceneRenderer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

class TileJournal;
class VisibleArea;

/// What a picture is drawn with; everything is borrowed.
struct PictureDrawing {
    RenderSession& rendering;
    krod::RenderAble& object;
    const krod::VValuePool& pool;
    const FrameSetup& setup;
    std::string name;               ///< for the progress line
    bool quiet = false;             ///< no progress line
    TileJournal* journal = nullptr; ///< null: finished tiles are not kept
    VisibleArea* visible = nullptr; ///< null: pixels are not counted
};

/// The tiles of a picture, row by row from the top.
class DrawnTiles {
public:
    explicit DrawnTiles(const PictureDrawing& drawing);

    /// The tile that comes next, or null at the end.
    [[nodiscard]] const PictureTile* next() const { return done < tiles.size() ? &tiles[done] : nullptr; }
    /// Its pixels, drawn now or kept from an earlier run. Throws Failure(Interrupted), and what drawing throws;
    /// missing memory for graphics is always a GraphicsMemoryFailure.
    [[nodiscard]] std::vector<krod::RGBAHalf> draw();

private:
    [[nodiscard]] std::vector<krod::RGBAHalf> pixelsOf(std::size_t number) const;
    [[nodiscard]] std::vector<krod::RGBAHalf> drawn(const PictureTile& tile) const;

    const PictureDrawing& drawing;
    std::vector<PictureTile> tiles;
    Progress progress;
    std::size_t done = 0; ///< tiles
};

/// A row of tiles, as rows of the picture.
class DrawnBand {
public:
    /// Draws the next row of tiles. Throws as DrawnTiles.
    void drawNext(DrawnTiles& tiles, int pictureWidth);

    /// The rows that are held; none at first.
    [[nodiscard]] int begin() const noexcept { return first; }
    [[nodiscard]] int end() const noexcept { return last; }
    /// Their pixels from a row on that is held.
    [[nodiscard]] const krod::RGBAHalf* row(int number) const {
        return pixels.data() + std::ptrdiff_t{number - first} * width;
    }

private:
    int first = 0, last = 0, width = 0;
    std::vector<krod::RGBAHalf> pixels;
};

/// A picture that is drawn while it is read, from the top. A row of its tiles is held at a time; rows are
/// read once. Reading throws as DrawnTiles.
class DrawnPicture : public PictureReader {
public:
    /// The description's size is that of the setup.
    DrawnPicture(const PictureDrawing& drawing, const PictureDescription& description);

private:
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;

    DrawnTiles tiles;
    DrawnBand band;
};

} // namespace workbench
