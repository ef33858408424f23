// SPDX-License-Identifier: Apache-2.0
// A plug-in without creators, linked so that it never leaves memory.
#include "host/core/VInitialization.h"

extern "C" int KROD_API_2022_Feb_15__pinned(krod::VInitialization*) { return 1; }
