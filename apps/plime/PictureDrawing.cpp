// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/PictureDrawing.h"

#include "apps/plime/Interruption.h"
#include "apps/plime/TileJournal.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench {

DrawnPicture::DrawnPicture(const PictureDrawing& drawing, const PictureDescription& description)
    : PictureReader(drawing.name),
      drawing(drawing),
      tiles(planTiles(drawing.setup.width, drawing.setup.height, drawing.setup.tiles)),
      progress(drawing.name, tiles.size(), "tiles", 1, drawing.quiet) {
    about = description;
}

void DrawnPicture::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows*) {
    for (int row = first; row < first + count;) {
        while (row >= bandEnd) drawNextBand();
        const int taken = std::min(bandEnd, first + count) - row;
        const std::ptrdiff_t width = about.width;
        out = std::copy_n(band.data() + width * (row - bandBegin), width * taken, out);
        row += taken;
    }
}

/// Goes on by a row of tiles.
void DrawnPicture::drawNextBand() {
    bandBegin = bandEnd;
    bandEnd += tiles[done].height;
    band.resize(static_cast<std::size_t>(about.width) * static_cast<std::size_t>(bandEnd - bandBegin));
    for (; done < tiles.size() && tiles[done].y < bandEnd; progress.show(++done)) {
        throwIfInterrupted();
        const PictureTile& tile = tiles[done];
        const std::vector<krod::RGBAHalf> part = pixelsOf(done);
        for (std::ptrdiff_t row = 0; row < tile.height; ++row)
            std::copy_n(part.data() + row * tile.width, tile.width, band.data() + row * about.width + tile.x);
    }
}

/// A kept tile, else one that is drawn and kept.
std::vector<krod::RGBAHalf> DrawnPicture::pixelsOf(std::size_t number) const {
    const PictureTile& tile = tiles[number];
    TileJournal* const journal = drawing.journal;
    const std::size_t size = static_cast<std::size_t>(tile.width) * static_cast<std::size_t>(tile.height);
    if (auto kept = journal ? journal->take(number, size) : std::nullopt) return *std::move(kept);
    std::vector<krod::RGBAHalf> pixels =
        renderTile(drawing.rendering, drawing.object, drawing.pool, drawing.setup, tile);
    if (journal) journal->keep(number, pixels);
    return pixels;
}

} // namespace workbench
