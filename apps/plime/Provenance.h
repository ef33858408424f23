// SPDX-License-Identifier: Apache-2.0
// How a picture was made, kept in the picture.
#pragma once

#include "apps/plime/Json.h"
#include "apps/plime/ModuleInstance.h"
#include "workbench/gl/SceneRenderer.h"

#include <string>

namespace workbench {

/// The network behind a picture: objects by creator and source with every parameter that was set, what is
/// connected to what, and the view. No time, host name or path, so that the same work leaves the same bytes;
/// of input files only the names are kept.
class Provenance {
public:
    /// Appends an object and returns the name it got; `input` is the name of the object it takes, or empty.
    std::string add(const ModuleInstance& module, const std::string& input);
    /// Appends a picture file as an object.
    std::string addPicture(const std::string& path);
    /// How the scene was seen.
    void setView(const FrameSetup& setup);
    /// How tile processors saw the picture: tiles of that size and, where it was cut with one, the pixels
    /// around what is kept of each.
    void setTiles(int width, int height, int overlap = 0);

    /// The document, in one line.
    [[nodiscard]] std::string text() const;

private:
    Json objects = Json::array();
    Json view, tiles, tileOverlap;
};

} // namespace workbench
