// SPDX-License-Identifier: Apache-2.0
// The attributes of an EXR head as metadata and back.
#pragma once

#include "workbench/files/PictureDescription.h"

#include <OpenEXR/ImfHeader.h>

namespace workbench {

/// All attributes but those that follow from the pixels (windows, channels, tiles …), with their stored
/// bytes.
[[nodiscard]] std::vector<Metadatum> metadataOf(const Imf::Header& header);

/// Enters what an EXR head can hold. An entry that clashes with an attribute of another type is left out and
/// its name appended to `dropped`.
void enterMetadata(const std::vector<Metadatum>& metadata, Imf::Header& header,
                   std::vector<std::string>& dropped);

} // namespace workbench
