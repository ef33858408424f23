// SPDX-License-Identifier: Apache-2.0
// Why an object is being made.
#pragma once

#include "host/Export.h"

namespace krod {

/// Handed to VCreatorBase::create and from there to VActionNotifier::VObjectCreation. Opaque to plug-ins; a
/// host derives from it to recognise its own requests.
class KROD_API VCreationContext {
public:
    VCreationContext() = default;
    virtual ~VCreationContext();
};

} // namespace krod
