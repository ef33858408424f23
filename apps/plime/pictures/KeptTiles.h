// SPDX-License-Identifier: Apache-2.0
// Work in tiles that can be gone on with after an interruption.
#pragma once

#include "apps/plime/commandline/Session.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/pictures/SmallerTiles.h"
#include "apps/plime/pictures/TileJournal.h"
#include "workbench/gl/RenderSession.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// Everything that decides the pixels of tiles, as a text: `network`, which says how they are made, without
/// what was asked of the file; the driver; the plug-ins' and the users' files that take part; the input `file`,
/// unless it is empty. Files that the input refers to, such as the textures of a model, are not in it.
[[nodiscard]] std::string jobText(const Session& session, const RenderSession& rendering,
                                  const std::string& network,
                                  const std::vector<const ModuleInstance*>& modules,
                                  const std::filesystem::path& file);

/// A run of work whose finished tiles are kept.
struct KeptWork {
    TileJournal& journal;
    const TileAttempt& attempt;
    bool resume;       ///< --resume was asked for
    std::size_t tiles; ///< in all
};

/// Does the work; then the tiles go. A failure says how to go on, if there is anything to take. Says, with
/// `resume`, how many tiles were taken, and warns where those that are there belong to other work.
void keepTilesDuring(Report& report, const KeptWork& kept, const std::function<void()>& work);

} // namespace workbench
