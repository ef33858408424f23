// SPDX-License-Identifier: Apache-2.0
// Reading in this process: for the process that does nothing else, and for tests of the decoders.
#pragma once

#include "workbench/files/Picture.h"

namespace workbench {

/// Opens a picture in this process, which a broken file may end or fill with memory.
[[nodiscard]] KROD_FILES_API std::unique_ptr<PictureReader>
openPictureHere(const std::filesystem::path& path);

/// Loads what openPictureHere needs for pictures other than EXR. Throws Failure(Input) when that is missing.
KROD_FILES_API void loadPictureCodec();

} // namespace workbench
