// SPDX-License-Identifier: Apache-2.0
// A process for each picture.
#pragma once

#include "workbench/files/reader/Channel.h"
#include "workbench/files/reader/PictureMessages.h"

#include <functional>

namespace workbench {

/// Reads one picture; in a process of its own, which ends with it.
using PictureWork = std::function<void(const OpenRequest& request, Channel& channel)>;

/// Makes a process for each picture that is asked for, until nobody can ask any more. A process whose
/// conversation is given up is ended; how one ends is told as the last word of its conversation. `prepare` is
/// called here before each of them: what it loads is loaded once for all.
void servePictures(Channel& control, const std::function<void(const OpenRequest& request)>& prepare,
                   const PictureWork& work);

} // namespace workbench
