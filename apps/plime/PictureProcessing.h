// SPDX-License-Identifier: Apache-2.0
// Pictures through a chain of tile processors.
#pragma once

#include "apps/plime/OutputPattern.h"
#include "apps/plime/PictureOutput.h"
#include "apps/plime/Progress.h"
#include "apps/plime/Session.h"
#include "apps/plime/TileChain.h"
#include "apps/plime/TilePlan.h"
#include "workbench/gl/RenderSession.h"

#include <optional>

namespace workbench {

/// The part of a progress line that one of many pictures fills.
struct ProgressPart {
    Progress& line;
    std::uint64_t begin, length;
};

/// Takes one picture after the other through the same modules. The OpenGL session is opened when it is first
/// needed, and compiled programs stay in it.
class PictureProcessing {
public:
    /// Everything but the wishes is borrowed; the chain is prepared.
    PictureProcessing(Session& session, const TileChain& chain, OutputWish wish, TilingWish tiling)
        : session(session), chain(chain), wish(std::move(wish)), tiling(tiling) {}

    /// Opens the OpenGL session and compiles all programs now. Throws Failure(OpenGL) and Failure(Shader).
    void compile();
    /// Reads, processes and writes one picture, and tells how it was cut and what was lost. Progress is shown
    /// in a line of its own, or in the part. Throws Failure; then nothing is written.
    void process(const PictureJob& job, const ProgressPart* part = nullptr);

private:
    RenderSession& rendering();
    [[nodiscard]] TilingTask taskOf(const std::string& input, const PictureReader& reader);
    void tell(const TilingTask& task, const TilePlan& plan);
    [[nodiscard]] PictureDescription outputDescription(const std::string& input, const PictureReader& reader,
                                                       const TilePlan& plan) const;

    Session& session;
    const TileChain& chain;
    OutputWish wish;
    TilingWish tiling;
    std::optional<RenderSession> openGL;
};

} // namespace workbench
