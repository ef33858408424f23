// SPDX-License-Identifier: Apache-2.0
// Writes rows while the next ones are read and worked on.
#pragma once

#include "apps/plime/pictures/PictureOutput.h"

#include "host/memory/StrongPtr.h"
#include "host/rendering/ImageTile.h"

#include <future>

namespace workbench {

/// Whole rows of a picture, with those of its additional channels.
struct Strip {
    int first = 0, count = 0;
    krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> pixels = {};
    ExtraRows extra = {};
};

/// Writes strips in the order in which they come, one at a time, in a thread beside the caller's. Where no thread
/// can be had, a strip is written when the next one comes.
class StripWriter {
public:
    /// The output is borrowed, and not for others until finish().
    explicit StripWriter(PictureOutput& output) : output(output) {}

    /// Waits until the strip before is written, begins this one, and gives the former back to be filled again; at
    /// first an empty one. Throws the failure of the former.
    [[nodiscard]] Strip write(Strip next);
    /// Waits until the last strip is written. Throws its failure.
    void finish();

private:
    PictureOutput& output;
    Strip strip;
    std::future<void> writing; ///< of the strip; waits when it is destroyed
};

} // namespace workbench
