// SPDX-License-Identifier: Apache-2.0
#include "Comparison.h"

#include "host/values/VValueTrait.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace parity {
namespace {

constexpr double LargestHalf = 65504;

std::string text(double value) { return krod::VValueTrait<double>::Text(value); }
std::string text(int value) { return krod::VValueTrait<int>::Text(value); }

} // namespace

double halfStep(double value) {
    const int exponent = value == 0 ? -14 : std::ilogb(value);
    return std::ldexp(1.0, std::max(exponent, -14) - 10);
}

void Comparison::add(const Bounded& expected, half_float::half got, const std::string& place) {
    if (!expected.defined()) return leaveOut("undefined: a divisor may be 0, or a power has no value");
    if (std::abs(expected.value) + expected.error > LargestHalf) return leaveOut("beyond the largest half");
    ++compared;
    const double allowed = expected.error + halfStep(std::abs(expected.value) + expected.error);
    double share = std::abs(static_cast<double>(static_cast<float>(got)) - expected.value) / allowed;
    if (std::isnan(share)) share = std::numeric_limits<double>::infinity();
    if (share <= largest) return;
    largest = share;
    worst = place + ": expected " + text(expected.value) + ", got " +
            text(static_cast<double>(static_cast<float>(got))) + ", allowed difference " + text(allowed);
}

testing::AssertionResult Comparison::verdict(const std::string& subject) const {
    int left = 0;
    std::string report = subject + ": " + text(compared) + " compared, largest difference " + text(largest) +
                         " of what arithmetic explains, limit " + text(limit);
    for (const auto& [reason, count] : omitted) {
        report += "\n  " + text(count) + " left out, " + reason;
        left += count;
    }
    std::printf("%s\n", report.c_str());
    if (!(largest <= limit)) return testing::AssertionFailure() << report << "\n  worst: " << worst;
    if (limit > 10 * largest)
        return testing::AssertionFailure() << report << "\n  The limit is more than ten times too loose.";
    if (left > compared) return testing::AssertionFailure() << report << "\n  Too much is left out.";
    return testing::AssertionSuccess();
}

} // namespace parity
