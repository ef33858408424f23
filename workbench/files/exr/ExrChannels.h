// SPDX-License-Identifier: Apache-2.0
// Which channels of an EXR file are colour.
#pragma once

#include "workbench/files/PictureDescription.h"

#include <OpenEXR/ImfChannelList.h>

namespace workbench {

/// Sorts the channels into colour, alpha and additional ones and enters them into the description, with
/// depth, grey, alpha and layer. Colour are R, G and B, or their long or lower-case names; else Y; else the layer
/// with all three that holds the whole picture by its name, or the first one; else X, Y and Z, or U and V; else
/// the first channel as grey. Subsampled channels and luminance with chroma are Failure(Input).
void enterChannels(const std::filesystem::path& path, const Imf::ChannelList& channels,
                   PictureDescription& description);

/// Name under which colour `i` (0 to 3: red, green, blue, alpha) is written.
[[nodiscard]] std::string channelName(const PictureDescription& description, std::size_t i);

} // namespace workbench
