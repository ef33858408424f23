// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/PictureProcessing.h"

#include "apps/plime/Provenance.h"
#include "apps/plime/TilePass.h"
#include "workbench/platform/EglContext.h"

#include <algorithm>

namespace workbench {
namespace {

std::string sizeText(int width, int height) { return std::to_string(width) + 'x' + std::to_string(height); }

std::uint64_t pixelsOf(const PictureDescription& picture) {
    return static_cast<std::uint64_t>(picture.width) * static_cast<std::uint64_t>(picture.height);
}

/// A module that measures in shares of a tile does something else to a picture that is cut.
Diagnostic cutWarning(const TilingTask& task, const TilePlan& plan, const std::string& key) {
    const int side = std::max(task.width, task.height);
    std::string advice;
    if (side <= task.shaderSide.value_or(0)) {
        advice = "Keep the picture whole with --tile " + std::to_string(side);
        if (const std::uint64_t needed = bytesForWhole(task); needed > task.memory)
            advice += " and --memory " + megabytesText(needed);
    }
    return {task.picture,
            "is cut into " + std::to_string(plan.count()) + " tiles of " +
                sizeText(plan.tileWidth(), plan.tileHeight()) + " pixels, and " + key +
                " measures in shares of a tile, so it reaches less far than in the whole picture",
            "",
            "",
            std::move(advice),
            {}};
}

} // namespace

RenderSession& PictureProcessing::rendering() {
    if (!openGL)
        openGL.emplace(
            SessionOptions{.gpu = session.options().gpu, .strictGlsl = session.options().strictGlsl});
    return *openGL;
}

void PictureProcessing::compile() {
    if (!chain.drawsWithOpenGL()) return;
    static_cast<void>(rendering());
    chain.compile();
}

void PictureProcessing::process(const PictureJob& job, const ProgressPart* part) {
    const auto reader = PictureReader::open(job.input);
    const TilingTask task = taskOf(job.input, *reader);
    const TilePlan plan(task, tiling);
    tell(task, plan);
    wish.path = job.output;
    PictureOutput output(wish, session.options(), outputDescription(job.input, *reader, plan));

    const std::uint64_t pixels = pixelsOf(reader->description());
    std::optional<Progress> own;
    if (!part) own.emplace(job.input, pixels, "Mpixel", 1e6, session.options().quiet);
    const ProgressPart shown = part ? *part : ProgressPart{*own, 0, pixels};
    processTiles(chain, plan, *reader, output, [&](double share) {
        shown.line.show(shown.begin + static_cast<std::uint64_t>(share * static_cast<double>(shown.length)));
    });
    shown.line.clear();
    output.finish(session.report());
    if (reader->overflowCount() > 0)
        session.report().warning(
            {job.input,
             std::to_string(reader->overflowCount()) + " values are too large for a half and became infinite",
             "",
             "",
             "",
             {}});
}

TilingTask PictureProcessing::taskOf(const std::string& input, const PictureReader& reader) {
    const PictureDescription& picture = reader.description();
    TilingTask task{input, picture.width, picture.height, 0, session.options().memory, std::nullopt};
    for (const ExtraChannel& channel : picture.extraChannels) task.extraBytes += channel.bytesPerValue();
    if (chain.drawsWithOpenGL()) task.shaderSide = rendering().properties().maxTextureSize;
    return task;
}

void PictureProcessing::tell(const TilingTask& task, const TilePlan& plan) {
    Report& report = session.report();
    if (!task.shaderSide) {
        report.note("Working in strips of " + std::to_string(plan.tileHeight()) + " rows.");
        return;
    }
    const std::string size = sizeText(plan.tileWidth(), plan.tileHeight());
    const std::string driver = rendering().driver();
    const ModuleInstance* const dependent = chain.dependentOnTile();
    if (plan.count() == 1) {
        report.note("The picture is one tile of " + size + " pixels on " + driver + '.' +
                    (dependent ? " " + dependent->entry().key + " measures in shares of it." : ""));
        return;
    }
    report.note("The picture is cut into " + std::to_string(plan.count()) + " tiles of " + size +
                " pixels with an overlap of " + std::to_string(plan.overlap()) + ", on " + driver + '.');
    if (dependent) report.warning(cutWarning(task, plan, dependent->entry().key));
}

PictureDescription PictureProcessing::outputDescription(const std::string& input, const PictureReader& reader,
                                                        const TilePlan& plan) const {
    Provenance provenance;
    std::string last = provenance.addPicture(input);
    for (const auto& module : chain.instances()) last = provenance.add(*module, last);
    provenance.setTiles(plan.tileWidth(), plan.tileHeight(), plan.overlap());
    PictureDescription description = reader.description();
    description.isGrey = false; // channels are processed one by one and may come apart
    description.setText(NetworkName, provenance.text());
    return description;
}

} // namespace workbench
