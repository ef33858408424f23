// SPDX-License-Identifier: Apache-2.0
#include "Bounded.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace parity {
namespace {

constexpr double Smallest = 0x1p-126; // results below it may be flushed to 0
constexpr Bounded Undefined{std::numeric_limits<double>::quiet_NaN(),
                            std::numeric_limits<double>::infinity()};

/// The value with the error so far and that of rounding, given in half units in the last place. What single
/// precision holds needs no rounding.
Bounded rounded(double value, double error, double halfUnits = 1) {
    const bool exact =
        error == 0 && halfUnits == 1 && value == static_cast<double>(static_cast<float>(value));
    if (exact) return {value, 0};
    return {value, error + (std::abs(value) + error) * halfUnits * SingleRounding + Smallest};
}

} // namespace

bool Bounded::defined() const noexcept { return std::isfinite(value) && std::isfinite(error); }

Bounded constant(double value) { return rounded(value, 0); }

Bounded operator+(const Bounded& a, const Bounded& b) {
    return rounded(a.value + b.value, a.error + b.error);
}

Bounded operator-(const Bounded& a, const Bounded& b) {
    return rounded(a.value - b.value, a.error + b.error);
}

Bounded operator*(const Bounded& a, const Bounded& b) {
    return rounded(a.value * b.value,
                   std::abs(a.value) * b.error + std::abs(b.value) * a.error + a.error * b.error);
}

Bounded operator/(const Bounded& a, const Bounded& b) {
    const double nearest = std::abs(b.value) - b.error;
    if (!(nearest > 0)) return Undefined;
    if (a.value == 0 && a.error == 0) return {0, 0};
    const double quotient = a.value / b.value;
    return rounded(quotient, (a.error + std::abs(quotient) * b.error) / nearest, 5);
}

Bounded min(const Bounded& a, const Bounded& b) {
    return {std::min(a.value, b.value), std::max(a.error, b.error)};
}

Bounded max(const Bounded& a, const Bounded& b) {
    if (a.value - a.error >= b.value + b.error) return a;
    if (b.value - b.error >= a.value + a.error) return b;
    return {std::max(a.value, b.value), std::max(a.error, b.error)};
}

Bounded pow(const Bounded& x, const Bounded& y) {
    if (x.value == 0 && x.error == 0 && y.value - y.error > 0) return {0, 0};
    const double least = x.value - x.error;
    if (!(least > 0)) return Undefined;
    const double logarithm = std::log2(x.value), product = y.value * logarithm;
    const double ofLogarithm =
        std::max(6 * SingleRounding * std::abs(logarithm), x.value > 0.5 && x.value < 2 ? 0x1p-21 : 0) +
        std::log2(x.value / least);
    const double ofProduct = (std::abs(y.value) + y.error) * ofLogarithm + std::abs(logarithm) * y.error +
                             std::abs(product) * SingleRounding;
    const double power = std::pow(x.value, y.value);
    const double spread = std::exp2(product + ofProduct) - std::exp2(product);
    return rounded(power, spread, 6 + 4 * std::abs(product));
}

} // namespace parity
