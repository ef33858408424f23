// SPDX-License-Identifier: Apache-2.0
// The library's one export. Its name carries the date of the interface and the name of the plug-in.
#include "plugin/ApiKey.h"

#include "host/core/VInitialization.h"

/// [load · borrows] Answers with the host's own verdict, whatever it is.
extern "C" KROD_API int KROD_PLUGIN_ENTRY(krod::VInitialization* host) {
    return host->IsCompatible(krod::ApiKey);
}
