// SPDX-License-Identifier: Apache-2.0
// How the check reads a text: what it computes, what it lets pass, where it sees the fault.
#include "tests/shadercheck/HostileTexts.h"
#include "workbench/gl/check/ShaderCheck.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace workbench;
using namespace workbench::test;

void expectHarmless(const std::string& text) {
    const auto objection = objectionTo(text);
    EXPECT_FALSE(objection.has_value()) << text << "\nline " << objection->line << ' ' << objection->what;
}

void expectObjection(const std::string& text, int line, const std::string& what, std::uint64_t limit = 0,
                     std::uint64_t got = 0) {
    const auto objection = objectionTo(text);
    ASSERT_TRUE(objection.has_value()) << text;
    EXPECT_EQ(objection->line, line) << text;
    EXPECT_EQ(objection->what, what) << text;
    EXPECT_EQ(objection->limit, limit) << text;
    EXPECT_EQ(objection->got, got) << text;
}

TEST(ShaderArrays, sizes_areComputed) {
    const std::string many = "declares \"a\" with too many elements";
    expectObjection("const int n = (3 + 5) * 100;\nuniform float a[2 * n / 1 - (1 << 3)];\n", 2, many, 1024,
                    1592);
    expectObjection("#define N 32\nuniform float a[N*N + 1];\n", 2, many, 1024, 1025);
    expectObjection("uniform float a[33][32];\n", 1, many, 1024, 1056);
    expectObjection("uniform float[33] a[32];\n", 1, many, 1024, 1056);
    expectObjection("uniform float b, a[02001];\n", 1, many, 1024, 1025);
    expectHarmless("const int n = 0x400;\nconst uint m = 1u;\nuniform float a[n * 4 >> 2], b[7 % 4 + m];\n");
}

TEST(ShaderArrays, elements_countWhatTheyHold) {
    const std::string many = "declares \"a\" with too many elements";
    expectObjection("struct S { vec3 p; float w[10]; };\nuniform S a[94];\n", 2, many, 1024, 1034);
    expectObjection("struct S { vec3 p; float w[10]; } a[94];\n", 1, many, 1024, 1034);
    expectObjection("uniform mat4 a[257];\n", 1, many, 1024, 1028);
    expectObjection("uniform mat3x4 a[342];\n", 1, many, 1024, 1026);
    expectObjection("uniform Block { float x[600]; } a[2];\n", 1, many, 1024, 1200);
    expectHarmless("struct S { vec3 p; float w[10]; };\nuniform S a[93];\nuniform mat4 b[256];\n");
}

TEST(ShaderArrays, sizeThatIsUnknown_isRefused) {
    const std::string unknown = "declares \"a\" with a size that cannot be computed";
    for (const std::string size : {"n", "int(4.0)", "b.length()", "1/0", "2147483647 + 1", "n = 3", "3,4"})
        expectObjection("uniform float a[" + size + "];\n", 1, unknown);
    expectObjection("uniform float a[];\n", 1, "declares \"a\" without a size");
}

TEST(ShaderArrays, index_mayBeAnything) {
    expectHarmless(
        shader("uniform float weight[9];\nuniform int n;\n",
               "vec4(weight[n] + weight[int(gl_FragCoord.x) % 9] + vector[n][2])",
               "vec4 vector[3], image;\nint filters = n;\nfor (int i = 0; i < n; ++i) vector[i][n] = "
               "weight[i * n];\nif (n > 2) image[n] = 1.0; else image[n - 1] = 2.0;\n"));
}

TEST(ShaderArrays, everyPlaceOfADeclaration_isSeen) {
    for (const std::string text :
         {"void main() { for (int i = 0, a[2000]; i < 3; ++i); }", "void f(in float a[2000]) {}",
          "void f(float b, out float a[2000]) {}", "struct S { float b; float a[2000]; };",
          "const float b = 1.0, a[2000];", "float b[2] = float[](1.0, 2.0), a[2000];",
          "float b[2] = {1.0, 2.0}, a[2000];", "layout(location = 0) out highp vec4 a[2000];",
          "struct S { int x; } b, a[2000];", "struct buffer { int x; }; buffer a[2000];",
          "void main() { if (true) { float a[2000]; } }", "float b = c[3], a[2000];"})
        expectObjection(text, 1, "declares \"a\" with too many elements", 1024, 2000);
}

TEST(ShaderMacros, areFollowed) {
    expectHarmless(
        shader("#define SQUARE(x) ((x) * (x))\n#define FRAME(p) texture2D(frame, \\\n    p)\n#define EMPTY\n"
               "#define NOTHING() 1.0\nuniform sampler2D frame;\n",
               "FRAME(gl_TexCoord[0].xy * SQUARE(SQUARE(0.5))) EMPTY * NOTHING()"));
    expectObjection(shader("#define F(a, b) a + b\n", "vec4(F(1.0))"), 4,
                    "gives macro \"F\" a wrong number of arguments", 2, 1);
    expectObjection(shader("#define F(a) a\n", "vec4(F)"), 4, "uses macro \"F\" without its arguments");
    expectObjection(shader("#define F(a) a\n", "vec4(F(1.0"), 4,
                    "uses macro \"F\" without a closing bracket");
    expectObjection("#define A 1\n#define A 2\n", 2, "defines macro \"A\" a second time");
    expectObjection("#define GL_ES 1\n", 1, "defines the reserved name \"GL_ES\"");
    expectHarmless("#define A 1\n#define A 1\n#undef A\n#define A 2\n");
}

TEST(ShaderConditions, areFollowed) {
    const std::string huge = "uniform float a[2000];\n";
    const std::string what = "declares \"a\" with too many elements";
    expectHarmless("#if 0\n" + huge + "#elif 1\n#else\n" + huge + "#endif\n");
    expectHarmless("#define N 3\n#if !(defined N && N >= 2) || defined(M)\n" + huge + "#endif\n");
    expectHarmless("#version 150\n#if __VERSION__ < 150\n" + huge + "#endif\n");
    expectObjection("#ifndef M\n" + huge + "#endif\n", 2, what, 1024, 2000);
    expectObjection("#if 0\n#elif 3 == 1 + 2\n" + huge + "#endif\n", 3, what, 1024, 2000);
    expectObjection("#ifdef GL_ES\n" + huge + "#endif\n", 2, what, 1024, 2000);
    expectObjection("#ifndef GL_ES\n" + huge + "#endif\n", 2, what, 1024, 2000);
    expectObjection("#if __LINE__ > 3\n#endif\n", 1, "has a condition that cannot be computed");
}

TEST(ShaderCalls, overloads_areNoRecursion) {
    expectHarmless(shader("float tone(float x) { return x / (1.0 + x); }\n"
                          "vec3 tone(vec3 c) { return vec3(tone(c.r), tone(c.g), tone(c.b)); }\n"
                          "vec4 tone(vec4 c) { return vec4(tone(c.rgb), tone(c.a)); }\n",
                          "tone(vec4(0.5))"));
}

TEST(ShaderCalls, prototypes_areNoCalls) {
    expectHarmless(
        shader("float f(float x);\nfloat g(float x) { return f(x); }\nfloat f(float x) { return x; }\n",
               "vec4(g(0.5))"));
}

TEST(ShaderExpressions, chainOfElse_isNested) {
    const std::string link = "if (x < 1.0) x = 1.0;\nelse ";
    const auto chain = [&](int length) {
        return shader("", "vec4(x)", "float x = 0.0;\n" + repeated(link, length) + "x = 2.0;\n");
    };
    expectHarmless(chain(256));
    expectObjection(chain(257), 260, "nests statements too deeply", 256, 257);
}

TEST(ShaderBytes, thatDriversReadDifferently_areRefused) {
    expectObjection("int a;\n" + std::string(1, '\0'), 2, "holds a NUL, behind which drivers read nothing");
    expectObjection("int a;\r ", 1, "holds a carriage return without line feed");
    expectObjection("#define A x\\\ny\n", 1, "joins lines without a blank between them");
    expectObjection("int a\\b;\n", 1, "holds a backslash within a line");
    expectHarmless("int a;\r\n#define A x \\\r\n  y\r\n// \xC3\xA4\n");
}

} // namespace
