// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/TilePass.h"

#include "apps/plime/pictures/RowWindow.h"
#include "apps/plime/pictures/StripWriter.h"
#include "apps/plime/pictures/TileJournal.h"
#include "apps/plime/terminal/Interruption.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

namespace workbench {
namespace {

using Pixels = std::vector<krod::RGBAHalf>;
using Chunk = krod::Chunk<krod::RGBAHalf>;
using Store = krod::StrongPtr<Chunk>;

/// Runs the chain over one tile.
Store processed(const TileChain& chain, Pixels pixels, int width, int height) {
    const Store store(new Chunk(std::move(pixels)));
    krod::ImageTile tile(width, height, store);
    chain.process(tile);
    return store;
}

/// One picture on its way.
struct Pass {
    const TileChain& chain;
    const TilePlan& plan;
    PictureReader& reader;
    PictureOutput& output;
    ChainWatch& watch;
    const std::function<void(double)>& done;
    TileJournal* journal;
    int width = reader.description().width;
    RowWindow window{reader};
    Strip strip = {};
    StripWriter writer{output};

    /// Rows in their whole width need no copies, and are written while the next ones are read.
    void wholeRows(const TileSpan& rows) {
        const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(rows.length);
        if (!strip.pixels || strip.pixels->elements() != size) strip.pixels = Store(new Chunk(size));
        strip.first = rows.begin;
        strip.count = rows.length;
        reader.readRows(strip.first, strip.count, strip.pixels->data(), &strip.extra);
        watch.remember(strip.pixels->data(), size);
        watch.prepare(strip.pixels->data(), size);
        krod::ImageTile tile(width, rows.length, strip.pixels);
        chain.process(tile);
        watch.compare(strip.pixels->data(), size);
        strip = writer.write(std::move(strip));
    }

    /// A row of tiles: each is copied out of the window, and what is kept of it into the band. That is written at
    /// once, since a second band would take as much memory again.
    void bandOfTiles(const TileSpan& rows, int index) {
        window.moveTo(rows.seenBegin, rows.seenLength);
        Pixels band(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows.length));
        for (int i = 0; i < plan.columns(); ++i) {
            throwIfInterrupted();
            const TileSpan columns = plan.column(i);
            const auto number = static_cast<std::size_t>(index) * static_cast<std::size_t>(plan.columns()) +
                                static_cast<std::size_t>(i);
            const auto size =
                static_cast<std::size_t>(columns.length) * static_cast<std::size_t>(rows.length);
            if (const auto kept = journal ? journal->take(number, size) : std::nullopt) {
                watchTile(*kept, columns, rows);
                enter(*kept, columns, rows, band);
            } else {
                const Store store = keptPart(columns, rows);
                if (journal) journal->keep(number, {store->data(), size});
                watchTile({store->data(), size}, columns, rows);
                enter({store->data(), size}, columns, rows, band);
            }
            done((index + static_cast<double>(i + 1) / plan.columns()) / plan.rows());
        }
        const ExtraRows extra = window.extra(rows.begin, rows.length);
        output.write(rows.begin, rows.length, band.data(), &extra);
    }

    /// Processes a tile and moves what is kept of it to the start of the store.
    [[nodiscard]] Store keptPart(const TileSpan& columns, const TileSpan& rows) {
        Pixels pixels;
        pixels.reserve(static_cast<std::size_t>(columns.seenLength) *
                       static_cast<std::size_t>(rows.seenLength));
        for (int y = 0; y < rows.seenLength; ++y) {
            const krod::RGBAHalf* const row = window.row(rows.seenBegin + y) + columns.seenBegin;
            pixels.insert(pixels.end(), row, row + columns.seenLength);
        }
        watch.prepare(pixels.data(), pixels.size());
        Store store = processed(chain, std::move(pixels), columns.seenLength, rows.seenLength);
        for (int y = 0; y < rows.length; ++y) {
            const std::ptrdiff_t line = rows.begin - rows.seenBegin + y;
            const krod::RGBAHalf* const from =
                store->data() + line * columns.seenLength + columns.begin - columns.seenBegin;
            std::copy(from, from + columns.length, store->data() + std::ptrdiff_t{y} * columns.length);
        }
        return store;
    }

    void watchTile(std::span<const krod::RGBAHalf> tile, const TileSpan& columns, const TileSpan& rows) {
        const auto length = static_cast<std::size_t>(columns.length);
        for (int y = 0; y < rows.length; ++y) {
            watch.remember(window.row(rows.begin + y) + columns.begin, length);
            watch.compare(tile.data() + static_cast<std::size_t>(y) * length, length);
        }
    }

    void enter(std::span<const krod::RGBAHalf> tile, const TileSpan& columns, const TileSpan& rows,
               Pixels& band) const {
        for (std::ptrdiff_t y = 0; y < rows.length; ++y)
            std::copy_n(tile.data() + y * columns.length, columns.length,
                        band.data() + y * width + columns.begin);
    }
};

} // namespace

void processTiles(const TileChain& chain, const TilePlan& plan, PictureReader& reader, PictureOutput& output,
                  ChainWatch& watch, const std::function<void(double share)>& done, TileJournal* journal) {
    Pass pass{chain, plan, reader, output, watch, done, journal};
    for (int i = 0; i < plan.rows(); ++i) {
        throwIfInterrupted();
        const TileSpan rows = plan.row(i);
        if (plan.columns() == 1 && rows.length == rows.seenLength && !journal)
            pass.wholeRows(rows);
        else
            pass.bandOfTiles(rows, i);
        done(static_cast<double>(i + 1) / plan.rows());
    }
    pass.writer.finish();
}

} // namespace workbench
