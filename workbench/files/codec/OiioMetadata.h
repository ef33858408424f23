// SPDX-License-Identifier: Apache-2.0
// The attributes of an image as metadata and back.
#pragma once

#include "workbench/files/Picture.h"

#include <OpenImageIO/imageio.h>

namespace workbench {

/// All attributes but those that describe how the pixels happened to be stored. A network behind its marker
/// line in another text becomes an entry of its own.
[[nodiscard]] std::vector<Metadatum> metadataOf(const OIIO::ImageSpec& spec);

/// Enters what the format can hold; names of what it cannot are appended to `dropped`.
void enterMetadata(const std::vector<Metadatum>& metadata, const PictureFormat& format, OIIO::ImageSpec& spec,
                   std::vector<std::string>& dropped);

} // namespace workbench
