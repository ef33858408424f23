// SPDX-License-Identifier: Apache-2.0
// Every limit of the check: what lies on it passes, what lies one above does not.
#include "tests/shadercheck/HostileTexts.h"
#include "workbench/gl/check/ShaderCheck.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

namespace {

using namespace workbench;
using namespace workbench::test;

std::string number(int value) { return std::to_string(value); }

std::string ofBytes(int count) {
    const std::string text = shader("", "vec4(1.0)");
    return text + std::string(static_cast<std::size_t>(count) - text.size(), '\n');
}

std::string ofTokens(int count) {
    constexpr int Others = 13;
    return shader("", "vec4(1.0)", repeated(";", count - Others));
}

/// A macro at the end of a chain is so many replacements deep, that of the text itself included.
std::string ofNestedMacros(int depth) {
    std::string text = "#define M0 0.5\n";
    for (int i = 1; i <= depth - 2; ++i) text += "#define M" + number(i) + " M" + number(i - 1) + "\n";
    return shader(text, "vec4(M" + number(depth - 2) + ")");
}

std::string ofConstants(int count) {
    return shader("const float a[" + number(count) + "] = float[" + number(count) + "](0.0);\n",
                  "vec4(a[1])");
}

std::string ofAllElements(int count) {
    std::string names;
    for (int i = 0; i < 7; ++i) names += "a" + number(i) + "[1024], ";
    return shader("", "vec4(0.5)", "float " + names + "b[512], c[" + number(count - 7680) + "];\n");
}

std::string ofCalls(int count) {
    const std::string text = "void one() {}\nvoid hundred() { " + repeated("one(); ", 99) + "}\n";
    return shader(text, "vec4(1.0)", repeated("hundred();", count / 100) + repeated("one();", count % 100));
}

std::string ofDriverNames(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "#ifdef GL_name_" + number(i) + "\n#endif\n";
    return shader(text, "vec4(1.0)");
}

struct Limit {
    std::string name;
    std::uint64_t limit;
    std::function<std::string(int)> text;
};

const Limit Limits[] = {
    {"bytes", shaderlimit::Bytes, ofBytes},
    {"tokens", shaderlimit::Tokens, ofTokens},
    {"brackets", shaderlimit::Nesting,
     [](int n) { return shader("", "vec4" + repeated("(", n - 1) + "1.0" + repeated(")", n - 1)); }},
    {"macros", shaderlimit::Nesting, ofNestedMacros},
    {"conditions", shaderlimit::Nesting,
     [](int n) { return repeated("#if 1\n", n) + shader("", "vec4(1.0)") + repeated("#endif\n", n); }},
    {"statements", shaderlimit::Nesting,
     [](int n) {
         return shader("", "vec4(x)", "float x = 0.0;\n" + repeated("if (x < 1.0) ", n) + "x = 1.0;\n");
     }},
    {"variable", shaderlimit::VariableElements,
     [](int n) { return shader("", "vec4(a[1])", "float a[" + number(n) + "];\n"); }},
    {"uniform", shaderlimit::VariableElements,
     [](int n) { return shader("uniform vec4 a[" + number(n) + "];\n", "a[1]"); }},
    {"parameter", shaderlimit::VariableElements,
     [](int n) {
         return shader("float f(const float a[" + number(n) + "]) { return a[1]; }\n", "vec4(1.0)");
     }},
    {"constant", shaderlimit::ConstantElements, ofConstants},
    {"countedConstant", shaderlimit::ConstantElements,
     [](int n) { return shader("const int a[] = int[](0" + repeated(",-1", n - 1) + ");\n", "vec4(a[1])"); }},
    {"allElements", shaderlimit::AllElements, ofAllElements},
    {"list", shaderlimit::ListElements,
     [](int n) { return shader("", "vec4(f(0" + repeated(",0", n - 1) + "))"); }},
    {"calls", shaderlimit::Calls, ofCalls},
    {"operators", shaderlimit::Operators,
     [](int n) { return shader("", "vec4(x" + repeated("+x", n - 1) + ")", "float x = 0.0;\n"); }},
    {"driverNames", shaderlimit::DriverNames, ofDriverNames},
};

class ShaderLimit : public testing::TestWithParam<Limit> {};

INSTANTIATE_TEST_SUITE_P(All, ShaderLimit, testing::ValuesIn(Limits),
                         [](const auto& limit) { return limit.param.name; });

TEST_P(ShaderLimit, textOnIt_passes) {
    const auto objection = objectionTo(GetParam().text(static_cast<int>(GetParam().limit)));
    EXPECT_FALSE(objection.has_value()) << objection->what;
}

TEST_P(ShaderLimit, textOneAbove_isRefused) {
    const auto objection = objectionTo(GetParam().text(static_cast<int>(GetParam().limit) + 1));
    ASSERT_TRUE(objection.has_value());
    EXPECT_EQ(objection->limit, GetParam().limit) << objection->what;
    EXPECT_EQ(objection->got, GetParam().limit + 1) << objection->what;
}

} // namespace
