// SPDX-License-Identifier: Apache-2.0
// Text forms of numbers, switches, texts and pairs. They must be the same under every locale.
#include "host/values/VValueTrait.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

using namespace krod;
using namespace std::string_literals;

using Pair = FixedArray<double, 2>;

namespace {

template <class T>
std::string text(const T& value) {
    return VValueTrait<T>::Text(value);
}

/// Reads a text that must be right.
template <class T>
T read(const std::string& from) {
    T value{};
    const TextResult result = VValueTrait<T>::setValueFromText(value, from);
    EXPECT_TRUE(result) << '"' << from << "\" is not " << result.expected;
    return value;
}

/// Reads a text that must be wrong and must leave the old value; gives what is expected instead.
template <class T>
std::string refusal(const std::string& from, T old) {
    T value = old;
    const TextResult result = VValueTrait<T>::setValueFromText(value, from);
    EXPECT_FALSE(result) << '"' << from << "\" must be refused";
    EXPECT_EQ(value, old) << '"' << from << "\" must leave the old value";
    return result.expected;
}

bool sameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

} // namespace

TEST(DoubleText, Values_written_areShortAndHavePointOrExponent) {
    EXPECT_EQ(text(1.0), "1.0");
    EXPECT_EQ(text(0.1), "0.1");
    EXPECT_EQ(text(-0.0), "-0.0");
    EXPECT_EQ(text(10.000000000000002), "10.000000000000002");
    EXPECT_EQ(text(1e-5), "1e-05");
    EXPECT_EQ(text(1e22), "1e+22");
    EXPECT_EQ(text(123456789012345680000.0), "123456789012345683968.0");
}

TEST(DoubleText, MillionRandomBitPatterns_writtenAndRead_areTheSameBits) {
    std::mt19937_64 bits(20220215);
    for (int i = 0; i < 1'000'000; ++i) {
        const double value = std::bit_cast<double>(bits());
        if (!std::isfinite(value)) continue;
        const std::string written = text(value);
        ASSERT_EQ(written.find_first_of(",ni"), std::string::npos) << written;
        ASSERT_NE(written.find_first_of(".e"), std::string::npos) << written;
        double again = 0;
        ASSERT_TRUE(VValueTrait<double>::setValueFromText(again, written)) << written;
        ASSERT_TRUE(sameBits(value, again)) << written;
    }
}

TEST(DoubleText, Extremes_writtenAndRead_areTheSameBits) {
    using Limits = std::numeric_limits<double>;
    for (const double value :
         {0.0, -0.0, Limits::min(), Limits::max(), Limits::lowest(), Limits::denorm_min()})
        EXPECT_TRUE(sameBits(read<double>(text(value)), value)) << text(value);
}

TEST(DoubleText, Forms_thatPeopleType_areRead) {
    EXPECT_EQ(read<double>("2"), 2.0);
    EXPECT_EQ(read<double>("+2.5"), 2.5);
    EXPECT_EQ(read<double>("  .5\t"), 0.5);
    EXPECT_EQ(read<double>("1."), 1.0);
    EXPECT_EQ(read<double>("-1E3"), -1000.0);
}

TEST(DoubleText, Forms_thatAreNoFiniteNumber_areRefused) {
    for (const char* wrong :
         {"",     " ",   "inf",  "-inf", "nan", "infinity", "1e999", "-1e999", "1e-999", "0,5",
          "1.0f", "1 2", "0x10", "--1",  "+-1", "++1",      "+",     "1e",     "1.5.2",  "much"})
        EXPECT_EQ(refusal(wrong, 0.75), "a finite number like 0.5");
    EXPECT_EQ(refusal("1\0"s, 0.75), "a finite number like 0.5");
}

TEST(DoubleText, NonFinite_written_isNamed) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(text(infinity), "inf");
    EXPECT_EQ(text(-infinity), "-inf");
    EXPECT_EQ(text(std::nan("")), "nan");
    EXPECT_EQ(text(-std::nan("")), "nan");
}

TEST(IntText, Values_writtenAndRead_areTheSame) {
    using Limits = std::numeric_limits<int>;
    EXPECT_EQ(text(8), "8");
    EXPECT_EQ(text(-1), "-1");
    EXPECT_EQ(text(1234567), "1234567");
    for (const int value : {0, 7, -7, Limits::min(), Limits::max()}) EXPECT_EQ(read<int>(text(value)), value);
    EXPECT_EQ(read<int>(" +16 "), 16);
}

TEST(IntText, Forms_thatAreNoWholeNumber_areRefused) {
    for (const char* wrong :
         {"", "8.0", "8 9", "2147483648", "-2147483649", "0x8", "+-8", "1e3", "1.000", "eight"})
        EXPECT_EQ(refusal(wrong, 8), "a whole number from -2147483648 to 2147483647");
}

TEST(BoolText, Words_read_areSwitches) {
    EXPECT_EQ(text(true), "true");
    EXPECT_EQ(text(false), "false");
    for (const char* on : {"true", "1", "on", "yes", " true "}) EXPECT_TRUE(read<bool>(on));
    for (const char* off : {"false", "0", "off", "no", "\tno"}) EXPECT_FALSE(read<bool>(off));
    for (const char* wrong : {"", "2", "maybe", "true false"}) {
        EXPECT_EQ(refusal(wrong, true), "true or false");
        EXPECT_EQ(refusal(wrong, false), "true or false");
    }
}

TEST(StringText, Bytes_areKeptAsTheyAre) {
    const std::string code = "  gl_FragColor = vec4(1.0);\r\n\t// Gr\xc3\xbc\xc3\x9f"
                             "e \xff ";
    EXPECT_EQ(text(code), code);
    EXPECT_EQ(read<std::string>(code), code);
    EXPECT_EQ(read<std::string>(""), "");
    EXPECT_EQ(refusal("a\0b"s, "old"s), "a text without a NUL character");
}

TEST(PairText, Values_writtenAndRead_areTheSame) {
    EXPECT_EQ(text(Pair(0.5, 0.25)), "0.5 0.25");
    EXPECT_EQ(text(Pair(1, -1e-9)), "1.0 -1e-09");
    EXPECT_EQ(read<Pair>(text(Pair(1.0 / 3, -0.1))), Pair(1.0 / 3, -0.1));
    for (const char* form : {"0.5 2", " 0.5\t 2 ", "0.5,2", "0.5 , 2", "+0.5, +2.0"})
        EXPECT_EQ(read<Pair>(form), Pair(0.5, 2)) << form;
}

TEST(PairText, Forms_thatAreNoTwoNumbers_areRefused) {
    for (const char* wrong :
         {"", "0.5", "0.5 ", "0.5,", ",0.5", "1 2 3", "1,2,3", "0,5 0,5", "1 nan", "inf 1", "1;2"})
        EXPECT_EQ(refusal(wrong, Pair(3, 4)), "two finite numbers like \"0.5 0.5\"");
}
