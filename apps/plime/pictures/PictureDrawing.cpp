// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/PictureDrawing.h"

#include "apps/plime/pictures/TileJournal.h"
#include "apps/plime/pictures/VisibleArea.h"
#include "apps/plime/terminal/Interruption.h"
#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/RenderTarget.h"

#include "host/gl/GLError.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench {

DrawnTiles::DrawnTiles(const PictureDrawing& drawing)
    : drawing(drawing),
      tiles(planTiles(drawing.setup.width, drawing.setup.height, drawing.setup.tiles)),
      progress(drawing.name, tiles.size(), "tiles", 1, drawing.quiet) {}

std::vector<krod::RGBAHalf> DrawnTiles::draw() {
    throwIfInterrupted();
    std::vector<krod::RGBAHalf> pixels = pixelsOf(done);
    if (drawing.visible) drawing.visible->add(pixels);
    progress.show(++done, drawing.journal ? drawing.journal->takenCount() : 0);
    return pixels;
}

/// A kept tile, else one that is drawn and kept.
std::vector<krod::RGBAHalf> DrawnTiles::pixelsOf(std::size_t number) const {
    const PictureTile& tile = tiles[number];
    TileJournal* const journal = drawing.journal;
    const std::size_t size = static_cast<std::size_t>(tile.width) * static_cast<std::size_t>(tile.height);
    if (auto kept = journal ? journal->take(number, size) : std::nullopt) return *std::move(kept);
    std::vector<krod::RGBAHalf> pixels = drawn(tile);
    if (journal) journal->keep(number, pixels);
    return pixels;
}

std::vector<krod::RGBAHalf> DrawnTiles::drawn(const PictureTile& tile) const {
    try {
        return renderTile(drawing.rendering, drawing.object, drawing.pool, drawing.setup, tile);
    } catch (const krod::GLError& error) {
        if (!isMemoryError(error.code())) throw;
        throw GraphicsMemoryFailure(drawing.name, 0);
    }
}

void DrawnBand::drawNext(DrawnTiles& tiles, int pictureWidth) {
    width = pictureWidth;
    first = last;
    last += tiles.next()->height;
    pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(last - first));
    while (const PictureTile* const tile = tiles.next()) {
        if (tile->y >= last) break;
        const std::vector<krod::RGBAHalf> part = tiles.draw();
        for (std::ptrdiff_t row = 0; row < tile->height; ++row)
            std::copy_n(part.data() + row * tile->width, tile->width, pixels.data() + row * width + tile->x);
    }
}

DrawnPicture::DrawnPicture(const PictureDrawing& drawing, const PictureDescription& description)
    : PictureReader(drawing.name), tiles(drawing) {
    about = description;
}

void DrawnPicture::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    for (int row = first; row < first + count;) {
        while (row >= band.end()) band.drawNext(tiles, about.width);
        const int taken = std::min(band.end(), first + count) - row;
        out = std::copy_n(band.row(row), std::ptrdiff_t{about.width} * taken, out);
        row += taken;
    }
}

} // namespace workbench
