// SPDX-License-Identifier: Apache-2.0
#include "host/core/VActionNotifier.h"

#include "workbench/core/ActionListener.h"

#include <atomic>
#include <cstdio>

namespace workbench {

namespace {

constinit std::atomic<ActionListener*> installed{nullptr};

/// Never destroyed: plug-ins warn until the process ends.
ActionListener& listener() {
    static ActionListener& standard = *new ActionListener;
    ActionListener* const own = installed.load(std::memory_order_acquire);
    return own ? *own : standard;
}

} // namespace

ActionListener::~ActionListener() = default;

void ActionListener::warning(const std::string& text) { std::fprintf(stderr, "WARNING: %s\n", text.c_str()); }

void ActionListener::created(const krod::StrongPtr<krod::VObject>& /*object*/,
                             krod::VCreationContext& /*context*/, krod::VCreatorBase& /*creator*/) {}

ActionListener* setActionListener(ActionListener* listener) noexcept {
    return installed.exchange(listener, std::memory_order_acq_rel);
}

} // namespace workbench

namespace krod {

void VActionNotifier::Warning(const std::string& text) { workbench::listener().warning(text); }

void VActionNotifier::VObjectCreation(const StrongPtr<VObject>& result, VCreationContext& context,
                                      VCreatorBase& creator) {
    workbench::listener().created(result, context, creator);
}

} // namespace krod
