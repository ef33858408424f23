// SPDX-License-Identifier: Apache-2.0
// The collection of hostile texts, and what keeps the check itself from being attacked.
#include "tests/shadercheck/HostileTexts.h"
#include "workbench/gl/check/ShaderCheck.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace workbench;
using namespace workbench::test;

class HostileShader : public testing::TestWithParam<HostileText> {};

INSTANTIATE_TEST_SUITE_P(All, HostileShader, testing::ValuesIn(hostileTexts()),
                         [](const auto& hostile) { return hostile.param.name; });

TEST_P(HostileShader, text_isRefused) { EXPECT_TRUE(objectionTo(GetParam().text).has_value()); }

/// A pattern that fills all bytes that are allowed. If the check took more than linear time for one of them,
/// this program would not come to its end.
class FullShader : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(
    All, FullShader,
    testing::Values("(", ")", "[", "{", "}", "a[", "a(", "F(", "F(x,", "{{", "-", "!", "+ ", ".x", ",", ";",
                    "#", "#\n", "#if 1\n", "#if 0\n", "#elif 1\n", "#else\n", "#endif\n", "#define A A\n",
                    "#define A(x) x\n", "#ifdef GL_a\n#endif\n", "#if GL_a + GL_b + GL_c + GL_d\n",
                    "#if ((((((((\n", "#if !!!!!!!!\n", "const int n = n + 1;", "const int a = 1, ",
                    "float a[3], ", "struct S { ", "struct S { float x[9]; } s; ", "void f() { f(); } ",
                    "void f(int a) {} ", "f(1);", "float a[1] = ", "float a[] = float[](", "/*", "/**/", "//",
                    "\\\n ", "\n", " ", "\"", "'", "1", "1 ", "1e+", "0x", ".", "\x80", "if(", "else ",
                    "if (a) b; else "));

TEST_P(FullShader, pattern_isJudgedToTheEnd) {
    std::string text = "#define A 1\n#define F(x) x x\n#define G(x) F(x) F(x)\nvoid main() {}\n";
    while (text.size() + GetParam().size() <= shaderlimit::Bytes) text += GetParam();
    const auto objection = objectionTo(text);
    EXPECT_NE(objection.value_or(ShaderObjection{0, "nothing", 0, 0}).what, "");
}

/// Many functions of one name, each calling all before it, are the dearest call graph.
TEST(ShaderCheck, manyOverloads_areJudgedToTheEnd) {
    std::string text;
    for (int i = 0; i < 1000; ++i) text += "void f(int a) {}\n";
    EXPECT_FALSE(objectionTo(text + shader("", "vec4(1.0)", repeated("f(1);", 2000))).has_value());
}

} // namespace
