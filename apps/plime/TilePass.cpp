// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/TilePass.h"

#include "apps/plime/Interruption.h"
#include "apps/plime/RowWindow.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <utility>

namespace workbench {
namespace {

using Pixels = std::vector<krod::RGBAHalf>;
using Store = krod::StrongPtr<krod::Chunk<krod::RGBAHalf>>;

/// Runs the chain over one tile.
Store processed(const TileChain& chain, Pixels pixels, int width, int height) {
    const Store store(new krod::Chunk<krod::RGBAHalf>(std::move(pixels)));
    krod::ImageTile tile(width, height, store);
    chain.process(tile);
    return store;
}

/// One picture on its way.
struct Pass {
    const TileChain& chain;
    const TilePlan& plan;
    PictureOutput& output;
    RowWindow window;
    int width;
    const std::function<void(double)>& done;

    /// Rows in their whole width need no copies.
    void wholeRows(const TileSpan& rows) {
        const Store store = processed(chain, window.take(), width, rows.length);
        const ExtraRows extra = window.extra(rows.begin, rows.length);
        output.write(rows.begin, rows.length, store->data(), &extra);
    }

    /// A row of tiles: each is copied out of the window, and what is kept of it into the band.
    void bandOfTiles(const TileSpan& rows, int index) {
        Pixels band(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows.length));
        for (int i = 0; i < plan.columns(); ++i) {
            throwIfInterrupted();
            const TileSpan columns = plan.column(i);
            Pixels pixels;
            pixels.reserve(static_cast<std::size_t>(columns.seenLength) *
                           static_cast<std::size_t>(rows.seenLength));
            for (int y = 0; y < rows.seenLength; ++y) {
                const krod::RGBAHalf* const row = window.row(rows.seenBegin + y) + columns.seenBegin;
                pixels.insert(pixels.end(), row, row + columns.seenLength);
            }
            const Store store = processed(chain, std::move(pixels), columns.seenLength, rows.seenLength);
            for (int y = 0; y < rows.length; ++y) {
                const std::ptrdiff_t line = rows.begin - rows.seenBegin + y;
                std::copy_n(store->data() + line * columns.seenLength + columns.begin - columns.seenBegin,
                            columns.length, band.data() + std::ptrdiff_t{y} * width + columns.begin);
            }
            done((index + static_cast<double>(i + 1) / plan.columns()) / plan.rows());
        }
        const ExtraRows extra = window.extra(rows.begin, rows.length);
        output.write(rows.begin, rows.length, band.data(), &extra);
    }
};

} // namespace

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

void processTiles(const TileChain& chain, const TilePlan& plan, PictureReader& reader, PictureOutput& output,
                  const std::function<void(double share)>& done) {
    Pass pass{chain, plan, output, RowWindow(reader), reader.description().width, done};
    for (int i = 0; i < plan.rows(); ++i) {
        throwIfInterrupted();
        const TileSpan rows = plan.row(i);
        pass.window.moveTo(rows.seenBegin, rows.seenLength);
        if (plan.columns() == 1 && rows.length == rows.seenLength)
            pass.wholeRows(rows);
        else
            pass.bandOfTiles(rows, i);
        done(static_cast<double>(i + 1) / plan.rows());
    }
}

} // namespace workbench
