// SPDX-License-Identifier: Apache-2.0
// Rows of a picture, as many as are needed at once.
#pragma once

#include "workbench/files/Picture.h"

#include <vector>

namespace workbench {

/// A stretch of rows that slides down over a picture. Every row is read once.
class RowWindow {
public:
    /// The reader is borrowed. Empty at first.
    explicit RowWindow(PictureReader& reader) : reader(reader) {}

    /// Holds these rows from now on. Neither end may lie above where it was. Throws Failure(Input).
    void moveTo(int firstRow, int count);

    /// Whole rows from that one on.
    [[nodiscard]] const krod::RGBAHalf* row(int number) const;
    /// These rows of the additional channels.
    [[nodiscard]] ExtraRows extra(int firstRow, int count) const;

private:
    [[nodiscard]] std::size_t pixelsOf(int rows) const {
        return static_cast<std::size_t>(rows) * static_cast<std::size_t>(reader.description().width);
    }
    void dropRowsAbove(int row);

    PictureReader& reader;
    int first = 0, end = 0;
    std::vector<krod::RGBAHalf> pixels;
    ExtraRows planes;
};

} // namespace workbench
