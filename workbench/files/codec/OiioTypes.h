// SPDX-License-Identifier: Apache-2.0
// Pixel depths as OpenImageIO calls them.
#pragma once

#include "workbench/files/PictureDescription.h"

#include <OpenImageIO/imageio.h>

namespace workbench {

/// The library's type of a stored value.
[[nodiscard]] inline OIIO::TypeDesc typeOf(PixelDepth depth) {
    switch (depth) {
    case PixelDepth::UInt8:
        return OIIO::TypeDesc::UINT8;
    case PixelDepth::UInt16:
        return OIIO::TypeDesc::UINT16;
    case PixelDepth::Half:
        return OIIO::TypeDesc::HALF;
    case PixelDepth::Float:
        break;
    }
    return OIIO::TypeDesc::FLOAT;
}

} // namespace workbench
