// SPDX-License-Identifier: Apache-2.0
// The fourth base of objects.
#pragma once

#include "host/Export.h"

namespace krod {

/// Marks objects that are written into saved networks: their creator, and the text form of every parameter
/// that was set. It has no operations for plug-ins.
class KROD_API VSaveable {
public:
    virtual ~VSaveable();
};

} // namespace krod
