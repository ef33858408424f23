// SPDX-License-Identifier: Apache-2.0
// Times and their middle.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

/// Seconds that a call takes.
template <class Call>
[[nodiscard]] double secondsOf(Call&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The value below which that share of the values lies; 0.5 is the median. Of no values, 0.
[[nodiscard]] inline double quantile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1) + 0.5);
    std::ranges::nth_element(values, values.begin() + place);
    return values[static_cast<std::size_t>(place)];
}

[[nodiscard]] inline double median(const std::vector<double>& values) { return quantile(values, 0.5); }

/// Pairs of two times, measured in turn: one first, then the other, so that a machine that changes its speed changes
/// both, and neither always comes after the other.
struct Pairs {
    std::vector<double> first, second, ratios;

    template <class First, class Second>
    void measure(First&& one, Second&& other) {
        const bool swapped = ratios.size() % 2 == 1;
        const double early = swapped ? secondsOf(other) : secondsOf(one);
        const double late = swapped ? secondsOf(one) : secondsOf(other);
        first.push_back(swapped ? late : early);
        second.push_back(swapped ? early : late);
        ratios.push_back(first.back() / second.back());
    }
};

} // namespace bench
