// SPDX-License-Identifier: Apache-2.0
// The library behind EXR files.
#pragma once

#include <OpenEXR/ImfCompression.h>

namespace workbench {

/// Sets the limits that stand in for the library's checks of a head, which come before ours. Once for the process.
void prepareExrLibrary();

/// Rows that are read or written at once.
inline constexpr int ExrStepRows = 64;
/// The rows that are compressed together: 256 at most.
[[nodiscard]] int rowsInExrBlock(Imf::Compression compression);
/// The most such blocks that the library holds of a file, on any machine.
[[nodiscard]] int mostExrBlocks(Imf::Compression compression);

/// The most threads that work on one file: each holds two blocks of rows, so that memory grows with them.
inline constexpr int MostExrThreads = 4;
/// Prepares the library's threads, which all files of the process share, for that compression, and gives how many
/// work on a file: as many as the blocks of a step, but none for one block, and none where rows are only copied,
/// since handing them over takes longer.
[[nodiscard]] int exrThreadsFor(Imf::Compression compression);

} // namespace workbench
