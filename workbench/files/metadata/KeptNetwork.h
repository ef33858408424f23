// SPDX-License-Identifier: Apache-2.0
// The network of a picture inside of a text, for formats without a place of its own.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/PictureDescription.h"

#include <string>
#include <vector>

namespace workbench {

/// The text with the network behind it, after a line that marks its beginning.
[[nodiscard]] KROD_FILES_API std::string withNetwork(std::string text, const std::string& network);

/// Makes an entry of its own of a network behind a text: the name of a TIFF's document, or the description of
/// pictures that version 0.1.0 wrote.
KROD_FILES_API void separateNetwork(std::vector<Metadatum>& metadata);

} // namespace workbench
