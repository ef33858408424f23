// SPDX-License-Identifier: Apache-2.0
// The first base of objects and creators.
#pragma once

#include "host/memory/ReferenceBase.h"

namespace krod {

/// Something that the host manages by reference. Virtual base of VObject (the first of four) and of
/// VCreatorBase.
class KROD_API VManagedObjectBase : public ReferenceBase {
public:
    ~VManagedObjectBase() override;
};

} // namespace krod
