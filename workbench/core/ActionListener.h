// SPDX-License-Identifier: Apache-2.0
// Who hears krod::VActionNotifier.
#pragma once

#include "host/core/VActionNotifier.h"

namespace workbench {

/// Hears what plug-ins report. The default listener ignores creations and writes warnings to standard error.
class KROD_API ActionListener {
public:
    virtual ~ActionListener();
    /// A warning, one sentence without a line end.
    virtual void warning(const std::string& text);
    /// An object was made.
    virtual void created(const krod::StrongPtr<krod::VObject>& object, krod::VCreationContext& context,
                         krod::VCreatorBase& creator);
};

/// Installs a listener (borrowed) and returns the one before; null stands for the default.
KROD_API ActionListener* setActionListener(ActionListener* listener) noexcept;

} // namespace workbench
