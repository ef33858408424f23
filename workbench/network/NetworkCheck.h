// SPDX-License-Identifier: Apache-2.0
// Whether the texts and numbers of a network can be written at all.
#pragma once

#include "workbench/network/Network.h"

namespace workbench {

/// Throws Failure(Network) for the first text that is no UTF-8, holds control characters or is too long, and for the
/// first number that is not finite; it names the object and the parameter, or the field of the view.
void requireWritable(const Network& network);

} // namespace workbench
