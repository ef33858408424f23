// SPDX-License-Identifier: Apache-2.0
// Pixels against an oracle: what agrees, by how much, and what is left out.
#pragma once

#include "Bounded.h"

#include "host/rendering/RGBAHalf.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace parity {

/// Compares halves with numbers of an oracle. What is measured is the difference as a share of what
/// arithmetic can explain: the error bound of single precision, and one step of half for the conversion,
/// which drivers may round in any direction.
class Comparison {
public:
    /// `limit` is the largest share that passes: 1, or 0 where every bit has to be right.
    explicit Comparison(double limit) : limit(limit) {}

    /// `place` tells where, for the failure text.
    void add(const Bounded& expected, half_float::half got, const std::string& place);
    /// Counts a result of which the requirement says nothing, by the name of the reason.
    void leaveOut(const std::string& reason) { ++omitted[reason]; }

    /// Whether everything agrees within the limit, the limit is not more than ten times looser than what was
    /// measured, and most results were compared. Prints the largest share.
    [[nodiscard]] testing::AssertionResult verdict(const std::string& subject) const;

private:
    double limit;
    double largest = 0;
    std::string worst;
    int compared = 0;
    std::map<std::string, int> omitted;
};

/// The distance between two neighbouring halves at a value.
[[nodiscard]] double halfStep(double value);

} // namespace parity
