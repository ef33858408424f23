// SPDX-License-Identifier: Apache-2.0
// The entry without C linkage.
#include "Marker.h"

#include "host/core/VInitialization.h"

int KROD_API_2022_Feb_15__wrong_linkage(krod::VInitialization*) { return 1; }
