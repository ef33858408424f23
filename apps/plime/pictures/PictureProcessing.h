// SPDX-License-Identifier: Apache-2.0
// Pictures through a chain of tile processors.
#pragma once

#include "apps/plime/commandline/OpenGLOnDemand.h"
#include "apps/plime/commandline/Session.h"
#include "apps/plime/modules/Provenance.h"
#include "apps/plime/modules/TileChain.h"
#include "apps/plime/pictures/OutputPattern.h"
#include "apps/plime/pictures/PictureOutput.h"
#include "apps/plime/pictures/SmallerTiles.h"
#include "apps/plime/pictures/TilePlan.h"
#include "apps/plime/terminal/Progress.h"

#include <optional>
#include <string>

namespace workbench {

class ChainWatch;
class TileJournal;

/// What --tile and --overlap mean for tile processors. Throws Failure(Usage).
[[nodiscard]] TilingWish tilingFrom(const std::optional<std::string>& tile,
                                    const std::optional<std::string>& overlap);

/// Says how a picture is cut for a chain, and warns where a module does something else to a picture that is
/// cut.
void tellOfTiles(Session& session, OpenGLOnDemand& openGL, const TileChain& chain, const TilingTask& task,
                 const TilePlan& plan);

/// The part of a progress line that one of many pictures fills.
struct ProgressPart {
    Progress& line;
    std::uint64_t begin, length;
};

/// Takes one picture after the other through the same modules.
class PictureProcessing {
public:
    /// Everything but the wishes and the provenance is borrowed; the chain is prepared. The provenance tells
    /// of the chain; every picture is added to a copy. With `resume` tiles are taken that an interrupted run
    /// has left.
    PictureProcessing(Session& session, OpenGLOnDemand& openGL, const TileChain& chain, OutputWish wish,
                      TilingWish tiling, Provenance provenance, NetworkOutput& networks, bool resume = false)
        : session(session),
          openGL(openGL),
          chain(chain),
          wish(std::move(wish)),
          tiling(tiling),
          provenance(std::move(provenance)),
          networks(networks),
          resume(resume) {}

    /// Opens the OpenGL session and compiles all programs now. Throws Failure(OpenGL) and Failure(Shader).
    void compile();
    /// Reads, processes and writes one picture, in smaller tiles where the memory for graphics asks for it,
    /// and tells how it was cut and what was lost. Progress is shown
    /// in a line of its own, or in the part. Throws Failure; then nothing is written. Gives the network that
    /// the picture is made by, with the paths as they are given.
    Network process(const PictureJob& job, const ProgressPart* part = nullptr);

private:
    Network processInTiles(const PictureJob& job, const ProgressPart* part, TileAttempt& attempt);
    void writeProcessed(PictureReader& reader, const TilePlan& plan, PictureOutput& output, ChainWatch& watch,
                        const PictureJob& job, const ProgressPart* part, TileJournal* journal);
    void writeAttempt(const PictureJob& job, PictureReader& reader, const TilePlan& plan,
                      const PictureDescription& description, const ProgressPart* part, TileJournal* journal);
    [[nodiscard]] std::string jobOf(const std::string& input, bool linear, Provenance made);
    void tellOfNothingKept(const std::string& input, bool usesShaders);
    void warnOfIdleOptions(const TilingTask& task, const TilePlan& plan);
    [[nodiscard]] TilingTask taskOf(const std::string& input, const PictureReader& reader);

    Session& session;
    OpenGLOnDemand& openGL;
    const TileChain& chain;
    OutputWish wish;
    TilingWish tiling;
    Provenance provenance;
    NetworkOutput& networks;
    bool resume;
    bool toldOfIdleOptions = false;
};

} // namespace workbench
