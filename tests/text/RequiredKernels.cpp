// SPDX-License-Identifier: Apache-2.0
// The required kernels of Display/Blurred: (1 - |i - m| 2/n)^(10^exponent) to 20 digits, computed with a program for
// numbers of any precision. No golden holds them.
#include "DisplayTexts.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <vector>

namespace {

/// The largest error that the steps in double precision can add.
constexpr double Tolerance = 1e-15;
constexpr std::string_view Separator = ", ";

class RequiredKernels : public DisplayTexts {
protected:
    RequiredKernels() : DisplayTexts("Display/Blurred", "BlurredObject.frag") {}

    /// The kernel's weights. Every byte around and between them has to be the required one.
    std::vector<double> weights(const std::string& width, const std::string& exponent) {
        const std::string begin = "const\tint\thorizontal = 1;\nconst float filter[] = float[](",
                          end = ");\n";
        std::string text = prefix(pool.set("width", width).set("exponent", exponent));
        EXPECT_TRUE(text.starts_with(begin) && text.ends_with(end)) << text;
        text = text.substr(begin.size(), text.size() - begin.size() - end.size());

        std::vector<double> found;
        const char* const last = text.data() + text.size();
        for (const char* at = text.data();; at += Separator.size()) {
            const auto [next, error] = std::from_chars(at, last, found.emplace_back(std::nan("")));
            EXPECT_EQ(error, std::errc()) << "no number, but \"" << at << '"';
            at = next;
            if (error != std::errc() || at == last) break;
            if (std::string_view(at, last).starts_with(Separator)) continue;
            ADD_FAILURE() << "no separator, but \"" << at << '"';
            break;
        }
        return found;
    }

    void expect(const std::string& width, const std::string& exponent, const std::vector<double>& required) {
        const std::vector<double> found = weights(width, exponent);
        ASSERT_EQ(found.size(), required.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], required[i], Tolerance) << width << ", " << exponent << ", weight " << i;
    }
};

TEST_F(RequiredKernels, width1_theInitialOne_hasThreeTaps) {
    expect("1", "0", {0.33333333333333333333, 1.0, 0.33333333333333333333});
}

TEST_F(RequiredKernels, width3point9_isThreeTaps) {
    expect("3.9", "0", {0.33333333333333333333, 1.0, 0.33333333333333333333});
    expect("3.9", "-0.5", {0.70651438949801786529, 1.0, 0.70651438949801786529});
    expect("3.9", "0.5", {0.0309891821704628139, 1.0, 0.0309891821704628139});
}

TEST_F(RequiredKernels, width4_beginsWithZeroAtEveryExponent) {
    expect("4", "-0.5", {0.0, 0.80316718642852756095, 1.0, 0.80316718642852756095});
    expect("4", "0.5", {0.0, 0.11170164519825137505, 1.0, 0.11170164519825137505});
}

TEST_F(RequiredKernels, width20_exponentZero_isATriangle) {
    expect("20", "0", {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9,
                       1.0, 0.9, 0.8, 0.7, 0.6, 0.5, 0.4, 0.3, 0.2, 0.1});
}

TEST_F(RequiredKernels, width20_leastExponent_isWider) {
    expect("20", "-0.5",
           {0.0,
            0.48280552796495069048,
            0.60112705813077276097,
            0.68336262522266039035,
            0.7484457386809165957,
            0.80316718642852756095,
            0.85083484082734203143,
            0.89333777627466184875,
            0.93186792404836308525,
            0.96723100814435368624,
            1.0,
            0.96723100814435368624,
            0.93186792404836308525,
            0.89333777627466184875,
            0.85083484082734203143,
            0.80316718642852756095,
            0.7484457386809165957,
            0.68336262522266039035,
            0.60112705813077276097,
            0.48280552796495069048});
}

TEST_F(RequiredKernels, width20_greatestExponent_isNarrower) {
    expect("20", "0.5",
           {0.0,
            0.00068821215673994430096,
            0.0061611640143570406973,
            0.022208141955934233167,
            0.055157325600907892207,
            0.11170164519825137505,
            0.19881660575829986831,
            0.32371065343061776784,
            0.49379152386711085243,
            0.71664175691289504593,
            1.0,
            0.71664175691289504593,
            0.49379152386711085243,
            0.32371065343061776784,
            0.19881660575829986831,
            0.11170164519825137505,
            0.055157325600907892207,
            0.022208141955934233167,
            0.0061611640143570406973,
            0.00068821215673994430096});
}

} // namespace
