// SPDX-License-Identifier: Apache-2.0
// What a plug-in reports to the host.
#pragma once

#include "host/Export.h"
#include "host/memory/StrongPtr.h"

#include <string>

namespace krod {

class VCreationContext;
class VCreatorBase;
class VObject;

/// Notices for whoever shows or logs what happens.
class KROD_API VActionNotifier {
public:
    /// [any · borrows] A warning, one sentence without a line end.
    static void Warning(const std::string& text);
    /// [host · borrows] An object was made, for the context that the host handed to the creator.
    static void VObjectCreation(const StrongPtr<VObject>& result, VCreationContext& context,
                                VCreatorBase& creator);
};

} // namespace krod
