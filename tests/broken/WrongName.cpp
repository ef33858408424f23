// SPDX-License-Identifier: Apache-2.0
// One underscore too few in the entry's name.
#include "Marker.h"

extern "C" int KROD_API_2022_Feb_15_wrong_name(void*) { return 1; }
