// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngFilter.h"

#include <cstdlib>
#include <cstring>

namespace workbench {
namespace {

enum class Filter : std::uint8_t { None, Sub, Up, Average, Paeth };

using Bytes = const std::uint8_t* __restrict;

std::uint8_t byte(int value) { return static_cast<std::uint8_t>(value); }

/// The neighbour that is nearest to left + above - corner.
int paeth(int left, int above, int corner) {
    const int toLeft = std::abs(above - corner), toAbove = std::abs(left - corner);
    const int toCorner = std::abs(left + above - 2 * corner);
    const int upper = toAbove <= toCorner ? above : corner;
    return toLeft <= toAbove && toLeft <= toCorner ? left : upper;
}

/// The first pixel has no left neighbour, which counts as 0.
void filterStart(Filter filter, Bytes row, Bytes above, std::size_t count, std::uint8_t* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) {
        const int predicted = filter == Filter::Up || filter == Filter::Paeth ? above[i]
                              : filter == Filter::Average                     ? above[i] / 2
                                                                              : 0;
        out[i] = byte(row[i] - predicted);
    }
}

template <typename Predict>
void filterRest(std::size_t from, std::size_t count, std::size_t pixel, Bytes row, Bytes above,
                std::uint8_t* __restrict out, Predict predict) {
    for (std::size_t i = from; i < count; ++i)
        out[i] = byte(row[i] - predict(row[i - pixel], above[i], above[i - pixel]));
}

std::uint64_t sumOfSizes(Bytes bytes, std::size_t count) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += static_cast<unsigned>(std::abs(static_cast<std::int8_t>(bytes[i])));
    return sum;
}

} // namespace

PngFilter::PngFilter(std::size_t rowBytes, std::size_t bytesPerPixel)
    : rowBytes(rowBytes), pixel(bytesPerPixel), noRow(rowBytes), trial(rowBytes) {}

void PngFilter::filter(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out) {
    if (!above) above = noRow.data();
    std::uint64_t least = ~std::uint64_t{0};
    const auto weigh = [&](Filter filter) {
        const std::uint64_t sum = sumOfSizes(trial.data(), rowBytes);
        if (sum >= least) return;
        least = sum;
        out[0] = static_cast<std::uint8_t>(filter);
        std::memcpy(out + 1, trial.data(), rowBytes);
    };
    const auto attempt = [&](Filter filter, auto predict) {
        filterStart(filter, row, above, pixel, trial.data());
        filterRest(pixel, rowBytes, pixel, row, above, trial.data(), predict);
        weigh(filter);
    };
    attempt(Filter::Up, [](int, int up, int) { return up; });
    attempt(Filter::Sub, [](int left, int, int) { return left; });
    attempt(Filter::Average, [](int left, int up, int) { return (left + up) / 2; });
    attempt(Filter::Paeth, [](int left, int up, int corner) { return paeth(left, up, corner); });
    attempt(Filter::None, [](int, int, int) { return 0; });
}

} // namespace workbench
