// SPDX-License-Identifier: Apache-2.0
// The library behind EXR files.
#pragma once

namespace workbench {

/// Starts the library's threads, for reading and writing, and sets the limits that stand in for its checks of a
/// head, which come before ours. Once for the process.
void prepareExrLibrary();

/// The most threads that work on one file: each holds two blocks of rows, so that memory grows with them.
inline constexpr int MostExrThreads = 4;
/// How many there are. After prepareExrLibrary().
[[nodiscard]] int exrThreads();

} // namespace workbench
