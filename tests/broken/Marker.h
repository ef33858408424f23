// SPDX-License-Identifier: Apache-2.0
// Shows that code of a library has run.
#pragma once

#include <cstdio>

namespace {

/// Its constructor runs when the library is loaded.
const struct Marker {
    Marker() { std::puts("foreign code has run"); }
} marker;

} // namespace
