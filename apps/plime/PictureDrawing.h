// SPDX-License-Identifier: Apache-2.0
// A scene becomes the rows of a picture, tile by tile.
#pragma once

#include "apps/plime/Progress.h"
#include "workbench/files/Picture.h"
#include "workbench/gl/SceneRenderer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

class TileJournal;

/// What a picture is drawn with; everything is borrowed.
struct PictureDrawing {
    RenderSession& rendering;
    krod::RenderAble& object;
    const krod::VValuePool& pool;
    const FrameSetup& setup;
    std::string name;               ///< for the progress line
    bool quiet = false;             ///< no progress line
    TileJournal* journal = nullptr; ///< null: finished tiles are not kept
};

/// A picture that is drawn while it is read, from the top. A row of its tiles is held at a time; rows are
/// read once. Reading throws Failure(Interrupted) between two tiles, and what drawing throws.
class DrawnPicture : public PictureReader {
public:
    /// The description's size is that of the setup.
    DrawnPicture(const PictureDrawing& drawing, const PictureDescription& description);

private:
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    void drawNextBand();
    [[nodiscard]] std::vector<krod::RGBAHalf> pixelsOf(std::size_t number) const;

    const PictureDrawing& drawing;
    std::vector<PictureTile> tiles;
    Progress progress;
    std::size_t done = 0;             ///< tiles
    int bandBegin = 0, bandEnd = 0;   ///< rows that are held
    std::vector<krod::RGBAHalf> band; ///< of the whole width
};

} // namespace workbench
