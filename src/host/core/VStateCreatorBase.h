// SPDX-License-Identifier: Apache-2.0
// The third base of objects.
#pragma once

#include "host/Export.h"

namespace krod {

/// Marks objects that may have a state of their own in each viewer. It has no operations for plug-ins.
class KROD_API VStateCreatorBase {
public:
    virtual ~VStateCreatorBase();
};

} // namespace krod
