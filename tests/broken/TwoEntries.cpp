// SPDX-License-Identifier: Apache-2.0
// Two entries in one library.
#include "Marker.h"

extern "C" int KROD_API_2022_Feb_15__one(void*) { return 1; }
extern "C" int KROD_API_2022_Feb_15__two(void*) { return 1; }
