// SPDX-License-Identifier: Apache-2.0
// A scene becomes the rows of a picture, tile by tile.
#pragma once

#include "apps/plime/PictureOutput.h"
#include "apps/plime/TileChain.h"
#include "workbench/gl/SceneRenderer.h"

#include <string>

namespace workbench {

class TileJournal;

/// What a picture is drawn with; everything is borrowed.
struct PictureDrawing {
    RenderSession& rendering;
    krod::RenderAble& object;
    const krod::VValuePool& pool;
    const FrameSetup& setup;
    const TileChain& chain;         ///< runs over the finished picture
    std::string name;               ///< for the progress line
    bool quiet = false;             ///< no progress line
    TileJournal* journal = nullptr; ///< null: finished tiles are not kept
};

/// Draws the picture, runs the chain over it and writes its rows; the file is not finished. Without a chain only a row
/// of tiles is held at a time. Throws Failure(Interrupted) between two tiles, and what drawing and writing throw.
void drawPicture(const PictureDrawing& drawing, PictureOutput& output);

} // namespace workbench
