// SPDX-License-Identifier: Apache-2.0
// What can be said of a file: pictures, networks, models, lists of points.
#pragma once

#include "apps/plime/terminal/Json.h"

#include <string>

namespace workbench {

/// An object with "path", "kind" (picture, network, model, points) and what there is to say of that kind. Throws
/// Failure(Input) for a file that cannot be read, Failure(Network) for a broken network file.
[[nodiscard]] Json factsOf(const std::string& file);
/// The same facts for people, a few lines.
[[nodiscard]] std::string textOf(const Json& facts);

/// The network of a file, in several lines: of a picture the one that is kept there. Throws Failure(Input) where
/// there is none, else as factsOf.
[[nodiscard]] std::string networkIn(const std::string& file);

} // namespace workbench
