// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/PictureRendering.h"

#include "apps/plime/FileStamp.h"
#include "apps/plime/Help.h"
#include "apps/plime/PictureDrawing.h"
#include "apps/plime/PictureProcessing.h"
#include "apps/plime/SceneInput.h"
#include "apps/plime/TileJournal.h"
#include "apps/plime/TilePass.h"
#include "workbench/platform/EglContext.h"

#include "host/rendering/RenderAble.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace workbench {
namespace {

PictureDescription descriptionOf(const FrameSetup& setup, const Provenance& provenance) {
    PictureDescription description;
    description.width = setup.width;
    description.height = setup.height;
    description.hasAlpha = true;
    description.setText(NetworkName, provenance.text());
    return description;
}

/// Everything that decides the pixels of the tiles, as a text. Files that the input itself refers to, such
/// as the textures of a model, are not in it.
std::string jobText(const Session& session, const RenderSession& rendering, const RenderTask& task,
                    const PictureDescription& description) {
    std::string text = versionText() + description.find(NetworkName)->text + '\n' + rendering.driver() +
                       (session.options().strictGlsl ? " strict\n" : "\n") +
                       shaderFileStamps(session.shaderFolders());
    if (const auto file = task.scene.object().slots().input("file")) text += fileStamp(file->value().text());
    const auto addPlugin = [&](const CatalogueEntry& entry) {
        text += entry.plugin.value_or("") + '\n' + (entry.path ? fileStamp(*entry.path) : "");
    };
    addPlugin(task.scene.entry());
    for (const ModuleInstance* display : task.displays) addPlugin(display->entry());
    return text;
}

/// What is held of each pixel of a tile while it is drawn: colour and depth, and copies on the way here.
constexpr std::uint64_t BytesPerDrawnPixel = 48;

std::uint64_t product(int a, int b) { return static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b); }

/// What is left of the memory beside the rows and the tile that are drawn at once goes to the processors.
TilingTask cuttingOf(const Session& session, OpenGLOnDemand& openGL, const RenderTask& task,
                     const FrameSetup& setup, int bandRows, const PictureTile& tile) {
    const std::uint64_t memory = session.options().memory;
    const std::uint64_t drawing = product(setup.width, bandRows) * 2 * sizeof(krod::RGBAHalf) +
                                  product(tile.drawnWidth(), tile.drawnHeight()) * BytesPerDrawnPixel;
    const std::uint64_t left = memory - std::min(memory, drawing);
    TilingTask cutting{task.wish.requirePath(), setup.width, setup.height, 0, left, std::nullopt, true};
    if (task.chain.drawsWithOpenGL()) cutting.shaderSide = openGL.rendering().properties().maxTextureSize;
    return cutting;
}

/// The tiles of a saved network count for the size that they were saved with.
TilingWish wishOf(const ViewOptions& view) {
    TilingWish wish;
    if (view.saved && view.saved->processorTiles && !view.size) {
        const auto& [width, height, overlap] = *view.saved->processorTiles;
        wish.exact = {width, height, overlap};
    }
    return wish;
}

/// Takes the drawn picture through the chain, if there is a plan for one, and writes its rows.
void writeDrawn(const RenderTask& task, const std::optional<TilePlan>& plan, DrawnPicture& drawn,
                int bandRows, PictureOutput& output) {
    if (plan) {
        processTiles(task.chain, *plan, drawn, output, [](double) {});
        return;
    }
    const int height = drawn.description().height;
    std::vector<krod::RGBAHalf> band(static_cast<std::size_t>(product(drawn.description().width, bandRows)));
    for (int first = 0; first < height; first += bandRows) {
        const int count = std::min(bandRows, height - first);
        drawn.readRows(first, count, band.data());
        output.write(first, count, band.data());
    }
}

/// Does the work, keeping finished tiles until the picture is complete. A failure says how to go on, if there
/// is anything to take.
void keepTilesDuring(Report& report, TileJournal& journal, bool resume, std::size_t tiles,
                     const std::function<void()>& work) {
    const std::string parts = journal.folder().string();
    if (journal.foundAnotherJob())
        report.warning({parts,
                        "its tiles are of another drawing: input, parameters, view, driver or program "
                        "have changed; all tiles are drawn anew",
                        "",
                        "",
                        "",
                        {}});
    try {
        work();
    } catch (const Failure& failure) {
        if (!journal.holdsTiles()) throw;
        Diagnostic message = failure.diagnostic();
        message.details.push_back("Finished tiles are kept in " + parts +
                                  "; continue with the same command and --resume");
        throw Failure(failure.fault(), message);
    }
    journal.remove();
    if (resume)
        report.note(std::to_string(journal.takenCount()) + " of " + std::to_string(tiles) +
                    " tiles taken from " + parts + '.');
}

} // namespace

void renderToFile(Session& session, OpenGLOnDemand& openGL, const RenderTask& task, Provenance& provenance) {
    const ModuleInstance& top = task.displays.empty() ? task.scene : *task.displays.back();
    auto& object = dynamic_cast<krod::RenderAble&>(top.object());
    const krod::BoundingSphere bounds = object.bounds();
    warnOfNothingToDraw(session.report(), task.scene, task.input, bounds);
    const FrameSetup setup = task.view.frameOf(bounds);
    const auto tiles = planTiles(setup.width, setup.height, setup.tiles);
    const std::string path = task.wish.requirePath();
    const int bandRows = std::ranges::max(tiles, {}, &PictureTile::height).height;
    requireMemory(path, product(setup.width, bandRows), session.options().memory);
    RenderSession& rendering = openGL.rendering();
    session.report().note("Drawing on " + rendering.driver() + ".");
    if (tiles.size() > 1) session.report().note("Drawing in " + std::to_string(tiles.size()) + " tiles.");
    if (task.chain.drawsWithOpenGL()) task.chain.compile();

    provenance.setFrame(setup);
    std::optional<TilePlan> plan;
    if (!task.chain.empty()) {
        const TilingTask cutting = cuttingOf(session, openGL, task, setup, bandRows, tiles.front());
        plan.emplace(cutting, wishOf(task.view));
        tellOfTiles(session, openGL, task.chain, cutting, *plan);
        if (cutting.shaderSide && plan->count() > 1)
            provenance.setProcessorTiles(plan->tileWidth(), plan->tileHeight(), plan->overlap());
    }
    const PictureDescription description = descriptionOf(setup, provenance);
    PictureDrawing drawing{rendering, object, task.pool, setup, path, session.options().quiet};
    const auto draw = [&] {
        PictureOutput output(task.wish, session.options(), description);
        DrawnPicture drawn(drawing, description);
        writeDrawn(task, plan, drawn, bandRows, output);
        output.finish(session.report());
    };
    if (tiles.size() == 1) return draw();
    TileJournal journal(path, jobText(session, rendering, task, description), task.resume);
    drawing.journal = &journal;
    keepTilesDuring(session.report(), journal, task.resume, tiles.size(), draw);
}

} // namespace workbench
