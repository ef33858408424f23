// SPDX-License-Identifier: Apache-2.0
// A plug-in that needs something which no host has.
#include "Marker.h"

namespace krod {
int newerThanThisHost(double value);
}

extern "C" int KROD_API_2022_Feb_15__undefined_symbol(void*) { return krod::newerThanThisHost(0.5); }
