// SPDX-License-Identifier: Apache-2.0
// A plug-in for an older interface. Only the name tells: the entry itself would agree to anything.
#include "Marker.h"

extern "C" int KROD_API_2021_Jan_01__other_date(void*) { return 1; }
