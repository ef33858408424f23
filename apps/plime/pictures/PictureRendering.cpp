// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/PictureRendering.h"

#include "apps/plime/modules/ModulePages.h"
#include "apps/plime/modules/SceneInput.h"
#include "apps/plime/pictures/ChainWatch.h"
#include "apps/plime/pictures/DrawingPlan.h"
#include "apps/plime/pictures/InputLoss.h"
#include "apps/plime/pictures/KeptTiles.h"
#include "apps/plime/pictures/MemoryUse.h"
#include "apps/plime/pictures/PictureDrawing.h"
#include "apps/plime/pictures/PictureProcessing.h"
#include "apps/plime/pictures/TilePass.h"
#include "apps/plime/pictures/VisibleArea.h"
#include "workbench/files/FileContent.h"
#include "workbench/files/InputKind.h"
#include "workbench/gl/ArrayLimit.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/platform/EglContext.h"

#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/gl/VGLRenderContext.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

namespace workbench {
namespace {

PictureDescription descriptionOf(const FrameSetup& setup, const std::string& network) {
    PictureDescription description;
    description.width = setup.width;
    description.height = setup.height;
    description.hasAlpha = true;
    description.alphaIsAssociated = true;
    description.transfer = Transfer::Linear;
    setNetworkLine(description, network);
    return description;
}

std::uint64_t pixelCount(const FrameSetup& setup) {
    return static_cast<std::uint64_t>(setup.width) * static_cast<std::uint64_t>(setup.height);
}

/// What a display asks for, whoever decides that.
int askedSamples(const ModuleInstance& module, const krod::VValuePool& pool) {
    auto& display = dynamic_cast<krod::MSDeferredObjectDisplay&>(module.object());
    requireShortArrays(display, pool);
    krod::VGLRenderContext context(pool, 1, 1);
    return display.createRenderer(context)->requestedSamples();
}

/// As the driver has them.
int grantedSamples(RenderSession& rendering, int asked) {
    return rendering.targets().leaseMultisample(1, 1, asked)->samples();
}

/// The samples of all displays: their render targets are in use at once.
int allSamples(RenderSession& rendering, const RenderTask& task) {
    int samples = 0;
    for (const ModuleInstance* module : task.displays)
        samples += grantedSamples(rendering, askedSamples(*module, task.pool));
    return samples;
}

/// Tells who has set a count of samples where the driver has fewer, once per module.
void warnOfFewerSamples(Report& report, RenderSession& rendering, const RenderTask& task) {
    std::set<std::string> told;
    for (const ModuleInstance* module : task.displays) {
        const auto parameter = module->object().slots().input("samples");
        const int asked = askedSamples(*module, task.pool);
        const bool isSet = parameter && (parameter->state() & krod::VParameter::ValueSet) != 0 &&
                           parameter->value().text() == std::to_string(asked);
        const int granted = grantedSamples(rendering, asked);
        const std::string& key = module->entry().key;
        if (!isSet || granted >= asked || !told.insert(key).second) continue;
        report.warning({key,
                        "asks for " + std::to_string(asked) + " samples, but the driver has " +
                            std::to_string(granted) + " at most",
                        "",
                        "",
                        "",
                        {}});
    }
}

/// The file that is drawn, or "".
std::string fileOf(const RenderTask& task) {
    const auto file = task.scene.object().slots().input("file");
    return file ? file->value().text() : "";
}

/// What a model or points take here and, while they are drawn, in a software driver.
constexpr std::uint64_t CopiesOfContent = 2;

/// What the content of the file takes at most, here and in the driver; by counts, so that the same picture is always
/// cut alike. Models and points are read for it.
std::uint64_t bytesOfInput(const RenderTask& task) {
    const auto* const content = dynamic_cast<const FileContent*>(&task.scene.object());
    const std::string file = fileOf(task);
    if (!content || file.empty()) return 0;
    if (classifyInput(file) != InputKind::Picture) return CopiesOfContent * content->facts().bytes;
    const PictureDescription picture = PictureReader::open(file)->description();
    const std::uint64_t pixels = sizeof(krod::RGBAHalf) * static_cast<std::uint64_t>(picture.width) *
                                 static_cast<std::uint64_t>(picture.height);
    return pixels + std::max(pixels, picture.readerBytes);
}

/// Before a picture is decoded; models and points are read within a budget of their own.
void requireMemoryForInput(const Session& session, const RenderTask& task) {
    const std::string path = task.wish.requirePath(), file = fileOf(task);
    if (file.empty()) return;
    const std::uint64_t needed = bytesBesidePixels(true, path, 0) + bytesOfInput(task);
    if (needed > session.options().memory) refuseMemory(path, needed, session.options().memory);
}

DrawingPlan drawingOf(const Session& session, RenderSession& rendering, const RenderTask& task,
                      const FrameSetup& setup) {
    const std::string path = task.wish.requirePath();
    return planDrawing({path, setup.width, setup.height, setup.tiles, allSamples(rendering, task),
                        outputFormat(path).name == "EXR", !task.chain.empty(),
                        bytesBesidePixels(true, path, setup.width) + bytesOfInput(task),
                        session.options().memory});
}

/// What is left of the memory beside the drawing goes to the processors.
TilingTask cuttingOf(const Session& session, RenderSession& rendering, const RenderTask& task,
                     const FrameSetup& setup, const DrawingPlan& drawing) {
    TilingTask cutting{task.wish.requirePath(),  setup.width,  setup.height, 0,
                       session.options().memory, std::nullopt, true,         drawing.bytes};
    cutting.dependsOnPlace = task.chain.dependentOnTile() != nullptr;
    if (task.chain.drawsWithOpenGL()) cutting.shaderSide = rendering.properties().maxTextureSize;
    return cutting;
}

/// The tiles of a saved network count for the size that they were saved with.
TilingWish wishOf(const ViewOptions& view, const TileAttempt& attempt) {
    TilingWish wish;
    wish.side = attempt.side;
    if (view.saved && view.saved->processorTiles && !view.size) {
        const auto& [width, height, overlap] = *view.saved->processorTiles;
        wish.exact = {width, height, overlap};
    }
    return wish;
}

/// Takes the drawn picture through the chain, if there is a plan for one, and writes it.
void writeDrawn(const RenderTask& task, const std::optional<TilePlan>& plan, const PictureDrawing& drawing,
                const PictureDescription& description, bool inBlocks, PictureOutput& output,
                ChainWatch& watch) {
    if (plan) {
        DrawnPicture drawn(drawing, description);
        processTiles(task.chain, *plan, drawn, output, watch, [](double) {});
        return;
    }
    DrawnTiles tiles(drawing);
    DrawnBand band;
    while (const PictureTile* const tile = tiles.next()) {
        if (inBlocks) {
            output.writeBlock({tile->x, tile->y, tile->width, tile->height}, tiles.draw().data());
            continue;
        }
        band.drawNext(tiles, description.width);
        output.write(band.begin(), band.end() - band.begin(), band.row(band.begin()));
    }
}

krod::RenderAble& topOf(const RenderTask& task) {
    const ModuleInstance& top = task.displays.empty() ? task.scene : *task.displays.back();
    return dynamic_cast<krod::RenderAble&>(top.object());
}

/// Reads the file that is drawn, if it has not been read yet.
SceneExtent extentOf(const RenderTask& task) {
    SceneExtent extent{topOf(task).bounds()};
    if (const auto* const content = dynamic_cast<const FileContent*>(&task.scene.object())) {
        const ContentFacts facts = content->facts();
        extent.origin = facts.origin;
        if (facts.isPlane) extent.plane = facts.box;
    }
    return extent;
}

/// Of everything that is drawn of a tile.
int largestSide(const std::vector<PictureTile>& tiles) {
    int largest = 0;
    for (const PictureTile& tile : tiles)
        largest = std::max({largest, tile.drawnWidth(), tile.drawnHeight()});
    return largest;
}

void warnOfIdleOverlap(Report& report, const std::string& picture) {
    report.warning(
        {"--overlap", "has no effect on " + picture + ", which is drawn in one tile", "", "", "", {}});
}

/// What the network of the picture says of its view and its tiles; gives how processors see it, if any do.
std::optional<TilePlan> tellView(Session& session, OpenGLOnDemand& openGL, const RenderTask& task,
                                 Provenance& provenance, const FrameSetup& setup, const DrawingPlan& drawing,
                                 const TileAttempt& attempt) {
    provenance.setFrame(setup, extentOf(task).origin);
    if (task.chain.empty()) return std::nullopt;
    const TilingTask cutting = cuttingOf(session, openGL.rendering(), task, setup, drawing);
    const TilePlan plan(cutting, wishOf(task.view, attempt));
    tellOfTiles(session, openGL, task.chain, cutting, plan);
    if (cutting.shaderSide && plan.count() > 1)
        provenance.setProcessorTiles(plan.tileWidth(), plan.tileHeight(), plan.overlap());
    return plan;
}

/// Of everything that the processors draw at once.
std::size_t tileBytes(const RenderTask& task, const std::optional<TilePlan>& plan) {
    if (!plan || !task.chain.drawsWithOpenGL()) return 0;
    return TargetShape{plan->tileWidth(), plan->tileHeight(), 0, false}.bytes();
}

/// The text of the job that tiles belong to; the file's depth and curve do not change them.
std::string jobOf(const Session& session, const RenderSession& rendering, const RenderTask& task,
                  Provenance provenance) {
    provenance.setOutput({});
    std::vector<const ModuleInstance*> modules = task.displays;
    modules.push_back(&task.scene);
    return jobText(session, rendering, fingerprintOf(provenance.kept()), modules, fileOf(task));
}

bool makesNaN(const RenderTask& task) {
    return task.chain.makesNaN() || std::ranges::any_of(task.displays, [](const ModuleInstance* display) {
               return makesNaN(display->entry());
           });
}

/// One attempt. Throws GraphicsMemoryFailure when a tile does not fit into the memory for graphics.
VisibleArea drawToFile(Session& session, OpenGLOnDemand& openGL, const RenderTask& task,
                       Provenance& provenance, FrameSetup setup, TileAttempt& attempt) {
    if (attempt.side) setup.tiles.size = *attempt.side;
    RenderSession& rendering = openGL.rendering();
    const DrawingPlan planned = drawingOf(session, rendering, task, setup);
    setup.tiles = planned.tiles;
    const auto tiles = planTiles(setup.width, setup.height, setup.tiles);
    if (!attempt.side) warnOfFewerSamples(session.report(), rendering, task);
    session.report().detail("Drawing on " + rendering.driver() + ".");
    if (tiles.size() > 1) session.report().detail("Drawing in " + std::to_string(tiles.size()) + " tiles.");
    if (task.chain.drawsWithOpenGL()) task.chain.compile();
    attempt.used = largestSide(tiles);
    attempt.overlap = setup.tiles.overlap;

    const auto plan = tellView(session, openGL, task, provenance, setup, planned, attempt);
    rendering.targets().allow(planned.targetBytes + tileBytes(task, plan));
    const std::string job = jobOf(session, rendering, task, provenance);
    provenance.setOutput(task.wish.writeOptions(session.options()));
    provenance.clipNegative(task.wish.clipNegative);
    const std::string path = task.wish.requirePath();
    const PictureDescription description = descriptionOf(setup, task.networks.lineFor(provenance));
    PictureDrawing drawing{rendering, topOf(task), task.pool, setup, path, session.options().quiet};
    VisibleArea visible(setup.background, !task.displays.empty());
    drawing.visible = &visible;
    const auto write = [&](bool alphaAsItStands) {
        PictureOutput output(task.wish, session.options(), description,
                             {planned.inBlocks ? StoredTileSide : 0, alphaAsItStands});
        output.requireRoom(drawing.journal ? drawing.journal->missingBytes(pixelCount(setup)) : 0);
        ChainWatch watch({task.wish.clipNegative, output.changesColorsByAlpha()});
        writeDrawn(task, plan, drawing, description, planned.inBlocks, output, watch);
        output.finish(session.report(), makesNaN(task));
        tellOfNegatives(session.report(), path, watch.notNumbersFromNegative(), pixelCount(setup));
    };
    const auto draw = [&] {
        try {
            write(false);
        } catch (const AlphaChanged&) {
            tellOfChangedAlpha(session.report(), path);
            write(true);
        }
    };
    if (tiles.size() == 1) {
        draw();
        if (task.view.overlap) warnOfIdleOverlap(session.report(), path);
        return visible;
    }
    TileJournal journal(path, job, task.resume && !attempt.side);
    drawing.journal = &journal;
    keepTilesDuring(session.report(), {journal, attempt, task.resume, tiles.size()}, draw);
    return visible;
}

} // namespace

void renderToFile(Session& session, OpenGLOnDemand& openGL, const RenderTask& task, Provenance& provenance) {
    requireMemoryForInput(session, task);
    const SceneExtent extent = extentOf(task);
    warnOfNothingToDraw(session.report(), task.scene, task.input, extent.bounds);
    noteContent(session.report(), task.scene, task.input);
    const FrameSetup setup = task.view.frameOf(extent);
    withSmallerTiles(session.report(), task.wish.requirePath(), [&](TileAttempt& attempt) {
        const VisibleArea visible = drawToFile(session, openGL, task, provenance, setup, attempt);
        const std::string last = task.displays.empty() ? "" : task.displays.back()->entry().key;
        warnOfUnseen(session.report(), {task.scene, task.input, extent, setup, last}, visible);
    });
}

} // namespace workbench
