// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/PictureDrawing.h"

#include "apps/plime/Interruption.h"
#include "apps/plime/Progress.h"
#include "apps/plime/TileJournal.h"
#include "apps/plime/TilePass.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace workbench {
namespace {

using Pixels = std::vector<krod::RGBAHalf>;
using BandSink = std::function<void(const PictureTile& last, const Pixels& pixels)>;

/// A kept tile, else one that is drawn and kept.
Pixels tileOf(std::size_t number, const PictureTile& tile, const PictureDrawing& drawing) {
    TileJournal* const journal = drawing.journal;
    const std::size_t size = static_cast<std::size_t>(tile.width) * static_cast<std::size_t>(tile.height);
    if (auto kept = journal ? journal->take(number, size) : std::nullopt) return *std::move(kept);
    Pixels pixels = renderTile(drawing.rendering, drawing.object, drawing.pool, drawing.setup, tile);
    if (journal) journal->keep(number, pixels);
    return pixels;
}

/// Goes through the picture from the top, a row of tiles at a time, and hands over each such band in its whole width
/// with the last of its tiles.
void drawBands(const PictureDrawing& drawing, const BandSink& sink) {
    const FrameSetup& setup = drawing.setup;
    const auto tiles = planTiles(setup.width, setup.height, setup.tiles);
    Progress progress(drawing.name, tiles.size(), "tiles", 1, drawing.quiet);
    const auto width = static_cast<std::size_t>(setup.width);
    Pixels band;
    for (std::size_t done = 0; done < tiles.size(); ++done) {
        throwIfInterrupted();
        const PictureTile& tile = tiles[done];
        const Pixels part = tileOf(done, tile, drawing);
        band.resize(width * static_cast<std::size_t>(tile.height));
        for (int row = 0; row < tile.height; ++row)
            std::copy_n(part.data() + static_cast<std::ptrdiff_t>(row) * tile.width, tile.width,
                        band.data() + static_cast<std::ptrdiff_t>(row) * setup.width + tile.x);
        if (tile.x + tile.width == setup.width) sink(tile, band);
        progress.show(done + 1);
    }
}

} // namespace

void drawPicture(const PictureDrawing& drawing, PictureOutput& output) {
    const FrameSetup& setup = drawing.setup;
    if (drawing.chain.empty()) {
        drawBands(drawing, [&](const PictureTile& band, const Pixels& pixels) {
            output.write(band.y, band.height, pixels.data());
        });
        return;
    }
    Pixels picture;
    picture.reserve(static_cast<std::size_t>(setup.width) * static_cast<std::size_t>(setup.height));
    drawBands(drawing, [&](const PictureTile&, const Pixels& pixels) {
        picture.insert(picture.end(), pixels.begin(), pixels.end());
    });
    processRows(drawing.chain, picture, setup.width, setup.height);
    output.write(0, setup.height, picture.data());
}

} // namespace workbench
