// SPDX-License-Identifier: Apache-2.0
// The required arrays of the two displays that look at a neighbourhood, for every width above 1: rows from -R to R,
// within a row columns from -R to R, weights (1 - |x| s)(1 - |y| s) in double precision with s = 1 / (R + 1).
// No golden holds them.
#include "DisplayTexts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <ostream>
#include <vector>

namespace {

struct Neighbourhood {
    const char* source;
    const char* key;
    const char* file;
};

void PrintTo(const Neighbourhood& display, std::ostream* stream) { *stream << display.key; }

class RequiredArrays : public DisplayTexts, public testing::WithParamInterface<Neighbourhood> {
protected:
    RequiredArrays() : DisplayTexts(GetParam().key, GetParam().file) {}
};

constexpr std::array Displays = {
    Neighbourhood{"PixelContours", "Display/PixelContours", "PixelContours.frag"},
    Neighbourhood{"ProximityHDR", "Display/ProximityHDR", "ProximityHDR.frag"}};

std::string nameOf(const testing::TestParamInfo<Neighbourhood>& display) { return display.param.source; }

INSTANTIATE_TEST_SUITE_P(Text, RequiredArrays, testing::ValuesIn(Displays), nameOf);

/// The factors 1 - d s of the distances d from 0 to R in double precision, as another program computes them.
const std::vector<std::vector<double>> Tents = {
    {1.0, 0.6666666666666667, 0.33333333333333337},
    {1.0, 0.75, 0.5, 0.25},
    {1.0, 0.8, 0.6, 0.3999999999999999, 0.19999999999999996},
    {1.0, 0.8333333333333334, 0.6666666666666667, 0.5, 0.33333333333333337, 0.16666666666666674},
    {1.0, 0.8571428571428572, 0.7142857142857143, 0.5714285714285714, 0.4285714285714286, 0.2857142857142858,
     0.1428571428571429},
};

/// Reads one array: a first line, 2R + 1 rows of as many numbers, a closing line and an empty one.
class ArrayReader {
public:
    ArrayReader(const std::string& text, int radius) : rest(text), radius(radius) {}

    template <class Number, class Required>
    void expect(const std::string& firstLine, const Required& required) {
        skip(firstLine + '\n');
        for (int y = -radius; y <= radius; ++y) {
            for (int x = -radius; x <= radius; ++x) {
                Number number = -99;
                const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), number);
                rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
                EXPECT_EQ(number, required(x, y)) << firstLine << " at column " << x << ", row " << y;
                if (x != radius || y != radius) skip(", ");
            }
            skip("\n");
        }
        skip(");\n\n");
    }
    [[nodiscard]] std::string_view left() const { return rest; }

private:
    void skip(std::string_view expected) {
        ASSERT_EQ(rest.substr(0, expected.size()), expected);
        rest.remove_prefix(expected.size());
    }

    std::string_view rest;
    int radius;
};

TEST_P(RequiredArrays, width2_byteForByte) {
    EXPECT_EQ(prefix(pool.set("width", "2")),
              "const float weight[] = float[](\n"
              "0.11111111111111113, 0.22222222222222227, 0.33333333333333337, 0.22222222222222227, "
              "0.11111111111111113, \n"
              "0.22222222222222227, 0.44444444444444453, 0.6666666666666667, 0.44444444444444453, "
              "0.22222222222222227, \n"
              "0.33333333333333337, 0.6666666666666667, 1.0, 0.6666666666666667, 0.33333333333333337, \n"
              "0.22222222222222227, 0.44444444444444453, 0.6666666666666667, 0.44444444444444453, "
              "0.22222222222222227, \n"
              "0.11111111111111113, 0.22222222222222227, 0.33333333333333337, 0.22222222222222227, "
              "0.11111111111111113\n"
              ");\n\n"
              "const int iX[] = int[](\n"
              "-2, -1, 0, 1, 2, \n-2, -1, 0, 1, 2, \n-2, -1, 0, 1, 2, \n-2, -1, 0, 1, 2, \n-2, -1, 0, 1, 2\n"
              ");\n\n"
              "const int iY[] = int[](\n"
              "-2, -2, -2, -2, -2, \n-1, -1, -1, -1, -1, \n0, 0, 0, 0, 0, \n1, 1, 1, 1, 1, \n2, 2, 2, 2, 2\n"
              ");\n\n");
}

TEST_P(RequiredArrays, widthsAboveOne_withinAndBeyondTheLimit) {
    for (const std::vector<double>& tent : Tents) {
        const int radius = static_cast<int>(tent.size()) - 1;
        const std::string text = prefix(pool.set("width", krod::VValueTrait<int>::Text(radius)));
        const auto factor = [&](int distance) { return tent[static_cast<std::size_t>(std::abs(distance))]; };
        ArrayReader reader(text, radius);
        reader.expect<double>("const float weight[] = float[](",
                              [&](int x, int y) { return factor(x) * factor(y); });
        reader.expect<int>("const int iX[] = int[](", [](int x, int) { return x; });
        reader.expect<int>("const int iY[] = int[](", [](int, int y) { return y; });
        EXPECT_EQ(reader.left(), "") << "width " << radius;
    }
}

/// The corner of the widest neighbourhood that the limit allows: (1/6)^2.
TEST_P(RequiredArrays, width5_has121Elements) {
    const std::string text = prefix(pool.set("width", "5"));
    EXPECT_TRUE(text.starts_with("const float weight[] = float[](\n0.02777777777777")) << text.substr(0, 60);
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), 3 * 120);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3 * (1 + 11 + 2));
}

} // namespace
