// SPDX-License-Identifier: Apache-2.0
#include "plugin/LoadHook.h"

#include "plugin/ApiKey.h"

#include "host/core/VInitialization.h"

namespace krod::hook {

bool notify(unsigned notification) {
    const auto tell = [](int reason) { VInitialization::initPlugin(reason, KROD_PLUGIN_NAME, ApiKey); };
    switch (notification) {
    case ProcessAttach:
        tell(0);
        break;
    case ProcessDetach:
        tell(1);
        break;
    case ThreadAttach:
        tell(2);
        break;
    case ThreadDetach:
        tell(3);
        break;
    default:
        break;
    }
    return true;
}

} // namespace krod::hook
