// SPDX-License-Identifier: Apache-2.0
// A scene through displays and tile processors into a picture file.
#pragma once

#include "apps/plime/commandline/OpenGLOnDemand.h"
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commandline/ViewOptions.h"
#include "apps/plime/modules/Provenance.h"
#include "apps/plime/modules/TileChain.h"
#include "apps/plime/pictures/PictureOutput.h"

#include <string>
#include <vector>

namespace workbench {

/// What is drawn, from where, and into which file; everything is borrowed.
struct RenderTask {
    const ModuleInstance& scene;
    std::string input;                           ///< what people call the scene
    std::vector<const ModuleInstance*> displays; ///< connected, the first one nearest to the scene
    const TileChain& chain;                      ///< prepared; runs over the finished picture
    const krod::VValuePool& pool;                ///< for the parameters of scene and displays
    const ViewOptions& view;
    const OutputWish& wish;
    NetworkOutput& networks;
    bool resume = false; ///< take the tiles that an interrupted run has left
};

/// Draws and writes the picture, and says what was lost. The provenance tells how; it is completed with the
/// view and kept in the picture, unless a warning says why not. Throws Failure; then no picture is left, but tiles to go on with may be.
void renderToFile(Session& session, OpenGLOnDemand& openGL, const RenderTask& task, Provenance& provenance);

} // namespace workbench
