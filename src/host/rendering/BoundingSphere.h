// SPDX-License-Identifier: Apache-2.0
// Where an object is.
#pragma once

namespace krod {

/// A sphere around everything that an object draws, in world units. A radius below 0 means: draws nothing.
struct BoundingSphere {
    double x = 0, y = 0, z = 0;
    double radius = -1;
};

} // namespace krod
