// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/RowWindow.h"

#include <algorithm>

namespace workbench {

void RowWindow::moveTo(int firstRow, int count) {
    dropRowsAbove(firstRow);
    const int start = end, added = firstRow + count - end;
    if (added <= 0) return;
    pixels.resize(pixelsOf(start + added - first));
    ExtraRows rows;
    reader.readRows(start, added, pixels.data() + pixelsOf(start - first), &rows);
    planes.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t before = planes[i].size();
        planes[i].resize(before + rows[i].size());
        std::copy(rows[i].begin(), rows[i].end(), planes[i].data() + before);
    }
    end = start + added;
}

void RowWindow::dropRowsAbove(int row) {
    const int dropped = std::min(row, end) - first;
    const auto valuesDropped = static_cast<std::ptrdiff_t>(pixelsOf(dropped));
    if (!pixels.empty()) pixels.erase(pixels.begin(), pixels.begin() + valuesDropped);
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const std::size_t bytes = reader.description().extraChannels[i].bytesPerValue();
        planes[i].erase(planes[i].begin(),
                        planes[i].begin() + valuesDropped * static_cast<std::ptrdiff_t>(bytes));
    }
    first += dropped;
}

const krod::RGBAHalf* RowWindow::row(int number) const { return pixels.data() + pixelsOf(number - first); }

ExtraRows RowWindow::extra(int firstRow, int count) const {
    ExtraRows rows;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const std::size_t bytes = reader.description().extraChannels[i].bytesPerValue();
        const auto begin =
            planes[i].begin() + static_cast<std::ptrdiff_t>(pixelsOf(firstRow - first) * bytes);
        rows.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(pixelsOf(count) * bytes));
    }
    return rows;
}

} // namespace workbench
