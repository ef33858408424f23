// SPDX-License-Identifier: Apache-2.0
// The quad that fills the viewport.
#pragma once

#include "host/Export.h"

namespace workbench {

/// Draws one quad over the viewport at that depth, in normalised device coordinates (1 is the far plane),
/// with texture coordinates from (0,0) at the lower left to (1,1). The matrices are expected to be
/// identities.
KROD_API void drawFullScreenQuad(double depth);

} // namespace workbench
