// SPDX-License-Identifier: Apache-2.0
// Preferences for new objects.
#pragma once

#include "host/memory/ReferenceBase.h"

namespace krod {

/// Settings that a creator passes on to the objects it makes. The modules of this family have none: they hand
/// on an empty reference.
class KROD_API VCreationPreferences : public ReferenceBase {
public:
    ~VCreationPreferences() override;
};

} // namespace krod
