// SPDX-License-Identifier: Apache-2.0
// Numbers of an oracle: the exact value, and how far single precision may stray from it.
#pragma once

namespace parity {

/// A number in double precision with the largest error that the same computation in single precision can
/// have. An oracle written with it knows by itself where a result is undefined or ill-conditioned.
struct Bounded {
    double value = 0;
    double error = 0;

    /// False for what has no value, such as a quotient whose divisor may be 0.
    [[nodiscard]] bool defined() const noexcept;
};

/// A number that single precision holds as it is.
[[nodiscard]] inline Bounded exactly(double value) { return {value, 0}; }

/// A number that stands in a shader text or a uniform, rounded to single precision.
[[nodiscard]] Bounded constant(double value);

/// The half of a unit in the last place, relative to the number.
inline constexpr double SingleRounding = 0x1p-24;

[[nodiscard]] Bounded operator+(const Bounded& a, const Bounded& b);
[[nodiscard]] Bounded operator-(const Bounded& a, const Bounded& b);
[[nodiscard]] Bounded operator*(const Bounded& a, const Bounded& b);
/// GLSL grants a quotient 2.5 units in the last place.
[[nodiscard]] Bounded operator/(const Bounded& a, const Bounded& b);
[[nodiscard]] Bounded min(const Bounded& a, const Bounded& b);
[[nodiscard]] Bounded max(const Bounded& a, const Bounded& b);
/// GLSL grants pow what exp2(y * log2(x)) has: 3 units in the last place for log2, or 2^-21 between 0.5 and
/// 2; 3 + 2|y log2 x| units for exp2. Undefined where x may be below 0, and for x = 0 with y <= 0.
[[nodiscard]] Bounded pow(const Bounded& x, const Bounded& y);

} // namespace parity
