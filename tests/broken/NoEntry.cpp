// SPDX-License-Identifier: Apache-2.0
// A library that is no plug-in.
#include "Marker.h"

extern "C" int somethingElse() { return 1; }
