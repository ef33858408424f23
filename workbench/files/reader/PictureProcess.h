// SPDX-License-Identifier: Apache-2.0
// The sacrificed half: reads one picture for another process.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/files/reader/Channel.h"
#include "workbench/files/reader/PictureMessages.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace workbench {

/// Opens a picture in this process. Throws Failure.
using PictureOpener = std::function<std::unique_ptr<PictureReader>(const std::filesystem::path& path)>;

/// Opens the picture, tells its description and decodes the rows that are asked for until the other end is
/// gone. Whatever goes wrong in order is told as a failure. The memory of this process is limited to what the
/// picture declares, several times over.
void servePicture(const OpenRequest& request, Channel& channel, const PictureOpener& open);

} // namespace workbench
