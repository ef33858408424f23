// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/PictureProcessing.h"

#include "apps/plime/commandline/ViewOptions.h"
#include "apps/plime/modules/SceneInput.h"
#include "apps/plime/pictures/ChainWatch.h"
#include "apps/plime/pictures/InputLoss.h"
#include "apps/plime/pictures/KeptTiles.h"
#include "apps/plime/pictures/MemoryUse.h"
#include "apps/plime/pictures/TilePass.h"
#include "apps/plime/terminal/Numbers.h"
#include "workbench/files/InputKind.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/platform/EglContext.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace workbench {
namespace {

std::string sizeText(int width, int height) { return std::to_string(width) + 'x' + std::to_string(height); }

std::uint64_t pixelsOf(const PictureDescription& picture) {
    return static_cast<std::uint64_t>(picture.width) * static_cast<std::uint64_t>(picture.height);
}

/// A module that works with the place in the tile does something else to a picture that is cut.
Diagnostic cutWarning(const TilingTask& task, const TilePlan& plan, const std::string& key) {
    const int side = std::max(task.width, task.height);
    std::string advice;
    if (task.isDrawn) {
        advice = "\"plime process --tile\" on the finished picture can take more as one tile";
    } else if (side <= task.shaderSide.value_or(0)) {
        advice = "Keep the picture whole with --tile " + std::to_string(side);
        if (const std::uint64_t needed = bytesForWhole(task); needed > task.memory)
            advice += " and --memory " + megabytesText(needed);
    }
    return {task.picture,
            "is cut into " + std::to_string(plan.count()) + " tiles of " +
                sizeText(plan.tileWidth(), plan.tileHeight()) + " pixels, and " + key +
                " works with the place in the tile, so the result differs from that of the whole picture",
            "",
            "",
            std::move(advice),
            {}};
}

PictureDescription outputDescription(const PictureReader& reader, const std::string& network) {
    PictureDescription description = reader.description();
    description.isGrey = false; // channels are processed one by one and may come apart
    setNetworkLine(description, network);
    return description;
}

/// Throws Failure(Input) for what another command takes.
void refuseOtherInput(const std::string& input) {
    const auto refuse = [&](const char* what, const std::string& advice) {
        throw Failure(Fault::Input, {input, what, "", "", advice, {}});
    };
    std::error_code error;
    if (input.starts_with(DemoPrefix) && !std::filesystem::exists(input, error))
        refuse("is a demo scene, no picture", "Draw it with: plime render " + input);
    checkInputFile(input);
    if (lowerExtension(input) == "json")
        refuse("is a network, no picture", "Make its pictures with: plime run " + input);
    const auto kind = kindOf(input);
    if (kind == InputKind::Points)
        refuse("is a list of points, no picture", "Draw it with: plime render " + input);
    if (kind == InputKind::Model) refuse("is a model, no picture", "Draw it with: plime render " + input);
}

/// Only what is no picture is looked at further, since a picture may have any name.
std::unique_ptr<PictureReader> opened(const std::string& input, bool linear) {
    try {
        return PictureReader::open(input, {}, linear);
    } catch (const Failure& failure) {
        if (failure.fault() == Fault::Input) refuseOtherInput(input);
        throw;
    }
}

} // namespace

TilingWish tilingFrom(const std::optional<std::string>& tile, const std::optional<std::string>& overlap) {
    TilingWish tiling;
    if (tile) tiling.side = wholeNumber("--tile", *tile, SmallestAskedTile, LargestSide);
    if (overlap) tiling.overlap = wholeNumber("--overlap", *overlap, 0, LargestOverlap);
    const int largest = std::min(tiling.side.value_or(LargestCutTile), LargestCutTile);
    if (overlap && largest <= 2 * *tiling.overlap) // known before any picture, and the same for all
        refuseOverlap("--overlap", std::to_string(largest), *tiling.overlap);
    return tiling;
}

void tellOfTiles(Session& session, OpenGLOnDemand& openGL, const TileChain& chain, const TilingTask& task,
                 const TilePlan& plan) {
    Report& report = session.report();
    if (!task.shaderSide) {
        report.detail("Working in strips of " + std::to_string(plan.tileHeight()) + " rows.");
        return;
    }
    const std::string size = sizeText(plan.tileWidth(), plan.tileHeight());
    const std::string driver = openGL.rendering().driver();
    const ModuleInstance* const dependent = chain.dependentOnTile();
    if (plan.count() == 1) {
        report.detail("The picture is one tile of " + size + " pixels on " + driver + '.' +
                      (dependent ? " " + dependent->entry().key + " works with the place in it." : ""));
        return;
    }
    report.detail("The picture is cut into " + std::to_string(plan.count()) + " tiles of " + size +
                  " pixels with an overlap of " + std::to_string(plan.overlap()) + ", on " + driver + '.');
    if (dependent) report.warning(cutWarning(task, plan, dependent->entry().key));
}

void PictureProcessing::compile() {
    if (!chain.drawsWithOpenGL()) return;
    static_cast<void>(openGL.rendering());
    chain.compile();
}

Network PictureProcessing::process(const PictureJob& job, const ProgressPart* part) {
    Network made;
    withSmallerTiles(session.report(), job.input,
                     [&](TileAttempt& attempt) { made = processInTiles(job, part, attempt); });
    return made;
}

Network PictureProcessing::processInTiles(const PictureJob& job, const ProgressPart* part,
                                          TileAttempt& attempt) {
    const auto reader = opened(job.input, wish.srgb);
    wish.path = job.output;
    const TilingTask task = taskOf(job.input, *reader);
    TilingWish wanted = tiling;
    if (attempt.side) wanted.side = attempt.side;
    const TilePlan plan(task, wanted);
    attempt.overlap = tiling.overlap.value_or(0);
    if (task.shaderSide) attempt.used = std::max(plan.tileWidth(), plan.tileHeight());
    tellOfTiles(session, openGL, chain, task, plan);
    if (task.shaderSide)
        openGL.rendering().targets().allow(
            TargetShape{plan.tileWidth(), plan.tileHeight(), 0, false}.bytes());
    Provenance made = provenance;
    made.showPicture(job.input);
    made.setOutput(wish.writeOptions(session.options()));
    made.clipNegative(wish.clipNegative);
    if (task.shaderSide) made.setTiles(plan.tileWidth(), plan.tileHeight(), plan.overlap());
    const PictureDescription description = outputDescription(*reader, networks.lineFor(made));
    const auto work = [&](TileJournal* journal) {
        writeAttempt(job, *reader, plan, description, part, journal);
    };
    if (task.shaderSide && plan.count() > 1) {
        TileJournal journal(job.output, jobOf(job.input, wish.srgb, made), resume && !attempt.side);
        keepTilesDuring(session.report(), {journal, attempt, resume, static_cast<std::size_t>(plan.count())},
                        [&] { work(&journal); });
    } else {
        if (resume) tellOfNothingKept(job.input, task.shaderSide.has_value());
        work(nullptr);
    }
    warnOfIdleOptions(task, plan);
    return made.network();
}

/// Writes the picture, and once more from its beginning where the modules turn out to change alpha, which is no
/// coverage then.
void PictureProcessing::writeAttempt(const PictureJob& job, PictureReader& reader, const TilePlan& plan,
                                     const PictureDescription& description, const ProgressPart* part,
                                     TileJournal* journal) {
    const auto write = [&](bool alphaAsItStands) {
        PictureOutput output(wish, session.options(), description, {0, alphaAsItStands});
        output.requireRoom(journal ? journal->missingBytes(pixelsOf(description)) : 0);
        ChainWatch watch({wish.clipNegative, output.changesColorsByAlpha()});
        writeProcessed(reader, plan, output, watch, job, part, journal);
        tellOfInput(session.report(), job.input, reader.description(), wish.srgb);
        tellOfValueLoss(session.report(), job.input, reader.loss(), description.depth, output.depth());
        tellOfNegatives(session.report(), job.input, watch.notNumbersFromNegative(), pixelsOf(description));
    };
    try {
        write(false);
    } catch (const AlphaChanged&) {
        tellOfChangedAlpha(session.report(), job.output);
        write(true);
    }
}

void PictureProcessing::writeProcessed(PictureReader& reader, const TilePlan& plan, PictureOutput& output,
                                       ChainWatch& watch, const PictureJob& job, const ProgressPart* part,
                                       TileJournal* journal) {
    const std::uint64_t pixels = pixelsOf(reader.description());
    std::optional<Progress> own;
    if (!part) own.emplace(job.input, pixels, "Mpixel", 1e6, session.options().quiet);
    const ProgressPart shown = part ? *part : ProgressPart{*own, 0, pixels};
    const auto pieces = [&](double share) {
        return static_cast<std::uint64_t>(share * static_cast<double>(shown.length));
    };
    const auto done = [&](double share) {
        const std::size_t taken = journal ? journal->takenCount() : 0;
        shown.line.show(shown.begin + pieces(share),
                        pieces(static_cast<double>(taken) / static_cast<double>(plan.count())));
    };
    processTiles(chain, plan, reader, output, watch, done, journal);
    shown.line.clear();
    output.finish(session.report(), chain.makesNaN());
}

/// The text of the job that tiles belong to; the file's depth does not change them, nor does its curve where the
/// input is not made linear for it.
std::string PictureProcessing::jobOf(const std::string& input, bool linear, Provenance made) {
    WriteOptions curve;
    curve.srgb = linear;
    made.setOutput(curve);
    std::vector<const ModuleInstance*> modules;
    for (const auto& module : chain.instances()) modules.push_back(module.get());
    return jobText(session, openGL.rendering(), fingerprintOf(made.kept()), modules, input);
}

void PictureProcessing::tellOfNothingKept(const std::string& input, bool usesShaders) {
    session.report().warning({"--resume",
                              "has nothing to go on with: " + input +
                                  (usesShaders ? " is one tile" : " is worked on without a shader") +
                                  ", and all work is done again",
                              "",
                              "",
                              "",
                              {}});
}

/// --tile and --overlap where they change nothing, once for all pictures.
void PictureProcessing::warnOfIdleOptions(const TilingTask& task, const TilePlan& plan) {
    if (toldOfIdleOptions) return;
    const auto warn = [&](const std::string& option, const std::string& why) {
        session.report().warning({option, "has no effect" + why, "", "", "", {}});
        toldOfIdleOptions = true;
    };
    if (task.shaderSide && plan.count() == 1 && tiling.overlap)
        warn("--overlap", " on " + task.picture + ", which is one tile");
    if (task.shaderSide) return;
    const std::string why = ", because the modules work without a shader, strip by strip";
    if (tiling.side) warn("--tile", why);
    if (tiling.overlap) warn("--overlap", why);
}

TilingTask PictureProcessing::taskOf(const std::string& input, const PictureReader& reader) {
    const PictureDescription& picture = reader.description();
    TilingTask task{input, picture.width, picture.height, 0, session.options().memory, std::nullopt};
    task.otherBytes = bytesBesidePixels(chain.drawsWithOpenGL(), wish.requirePath(), picture.width) +
                      ReadAheadBytes + picture.readerBytes;
    for (const ExtraChannel& channel : picture.extraChannels) task.extraBytes += channel.bytesPerValue();
    task.dependsOnPlace = chain.dependentOnTile() != nullptr;
    if (chain.drawsWithOpenGL()) task.shaderSide = openGL.rendering().properties().maxTextureSize;
    return task;
}

} // namespace workbench
