// SPDX-License-Identifier: Apache-2.0
#include "tests/shadercheck/HostileTexts.h"

#include <stdexcept>
#include <string_view>

namespace workbench::test {
namespace {

std::string number(int value) { return std::to_string(value); }

std::string arrayOf(const std::string& size) {
    return shader("", "vec4(a[int(gl_FragCoord.x)])", "float a[" + size + "];\n");
}

std::string uniformArrayOf(const std::string& size) {
    return shader("uniform float a[" + size + "];\n", "vec4(a[int(gl_FragCoord.x)])");
}

/// Macros with an argument, of which each doubles what it is given.
std::string doublingCalls(int depth) {
    std::string text = "#define M0(x) (x)\n";
    for (int i = 1; i <= depth; ++i)
        text += "#define M" + number(i) + "(x) M" + number(i - 1) + "(x) + M" + number(i - 1) + "(x)\n";
    return shader(text, "vec4(M" + number(depth) + "(0.5))");
}

std::string nested(const std::string& open, const std::string& inner, const std::string& close, int depth) {
    return shader("", "vec4(" + repeated(open, depth) + inner + repeated(close, depth) + ")");
}

std::string bracketsOutOfMacros() {
    return shader("#define A ((((((((((((((((((((\n#define B A A A A A A A A A A A A A A\n"
                  "#define C ))))))))))))))))))))\n#define D C C C C C C C C C C C C C C\n",
                  "vec4(B 1.0 D)");
}

std::string elseChain(int length) {
    std::string text = "float x = gl_FragCoord.x, y = 0.0;\n";
    for (int i = 0; i < length; ++i) text += "if (x < " + number(i) + ".5) y = 1.0; else\n";
    return shader("", "vec4(y)", text + "y = 2.0;\n");
}

std::vector<HostileText> arrays() {
    return {
        {"variableArray2000000000", arrayOf("2000000000")},
        {"variableArray1000000", arrayOf("1000000")},
        {"variableArray65536", arrayOf("65536")},
        {"uniformArray100000000", uniformArrayOf("100000000")},
        {"arrayByProduct", arrayOf("1000*1000")},
        {"arrayByShift", arrayOf("1<<30")},
        {"arrayInHexadecimal", arrayOf("0x7fffffff")},
        {"arrayByMacro", "#define N 1000\n#define M N*N\n" + arrayOf("M")},
        {"arrayByConstant", "const int k = 40000;\nconst int n = k*(k+7)/2;\n" + arrayOf("n")},
        {"arrayByFunction", arrayOf("int(max(1.0, 2000000.0))")},
        {"arrayByShadowedConstant",
         shader("const int n = 1000000;\nfloat g() { const int n = 1; float b[n]; return b[0]; }\n",
                "vec4(a[0] + g())", "float a[n];\n")},
        {"arrayByWrappedUnsigned", arrayOf("(1u - 2u) / 2u")},
        {"arrayOfArrays",
         shader("#extension GL_ARB_arrays_of_arrays : enable\n", "vec4(a[0][0])", "float a[1000][1000];\n")},
        {"arrayOfStructures", shader("struct S { float b[1000]; };\nstruct T { S s[1000]; };\n",
                                     "vec4(a[0].s[0].b[0])", "T a[100];\n")},
        {"arrayTypeInFront", "#version 120\n" + shader("", "vec4(a[0])", "float[2000000] a;\n")},
        {"secondInADeclaration", shader("", "vec4(c[0])", "float a = 1.0, b[2], c[3000000];\n")},
        {"arrayParameter",
         shader("float f(float a[500000]) { return a[0]; }\n", "vec4(f(float[500000](0.0)))")},
        {"arrayWithoutSize", shader("uniform float a[];\n", "vec4(a[2000000000])")},
        {"interfaceBlock",
         "#version 150\nuniform Block { float a[1000000]; };\nvoid main() { gl_FragColor = vec4(a[7]); }\n"},
        {"manyArrays", shader("", "vec4(a[0])",
                              "float a[1024], b[1024], c[1024], d[1024], e[1024], f[1024], g[1024], h[1024], "
                              "i[1024];\n")},
        {"arrayInCalledFunction",
         shader("float f(int i) { float a[1000]; a[i] = 1.0; return a[i/2]; }\n",
                "vec4(f(1) + f(2) + f(3) + f(4) + f(5) + f(6) + f(7) + f(8) + f(9))")},
        {"arrayBehindDriversName", "#if defined(GL_ARB_gpu_shader5) && !defined(GL_ARB_nonsense)\n#define N "
                                   "1000000\n#else\n#define N 1\n"
                                   "#endif\n" +
                                       arrayOf("N")},
        {"arrayBehindVersion",
         "#if __VERSION__ == 120\n#define N 1000000\n#else\n#define N 1\n#endif\n" + arrayOf("N")},
    };
}

std::vector<HostileText> macros() {
    return {
        {"macroDoubling14", shader(doublingMacros(14), "vec4(M14)")},
        {"macroDoubling20", shader(doublingMacros(20), "vec4(M20)")},
        {"macroDoubling30", shader(doublingMacros(30), "vec4(M30)")},
        {"functionMacroDoubling20", doublingCalls(20)},
        {"macroInItsArguments",
         shader("#define D(x) (x)+(x)\n", "vec4(" + repeated("D(", 30) + "0.5" + repeated(")", 30) + ")")},
        {"macroThatGrows", shader("#define A A + B\n#define B A + A\n", "vec4(A)")},
        {"macroThatPastes", shader("#define P(a, b) a##b\n", "vec4(P(1, .0))")},
        {"macroNameHandedOn", shader("#define F(x) x + x\n#define G F\n", "vec4(G (G (0.5)))")},
        {"macroInCondition", doublingMacros(24) + "#if M24 > 3.0\n#endif\n" + shader("", "vec4(1.0)")},
        {"macroInLineDirective", doublingMacros(24) + "#line M24\n" + shader("", "vec4(1.0)")},
        {"macroOfTheShims", shader("#define krod_pow(a, b) pow(a, b) + pow(a, b)\n", "vec4(pow(0.5, 0.5))")},
        {"overloadBehindTheShims",
         shader("float krod_pow(int a, int b) { return 1.0; }\n", "vec4(pow(1, 2))")},
    };
}

std::vector<HostileText> others() {
    return {
        {"callDoubling25", shader(callingFunctions(25, 2), "vec4(f25(0.5))")},
        {"callDoubling30", shader(callingFunctions(30, 2), "vec4(f30(0.5))")},
        {"callTripling9", shader(callingFunctions(9, 3), "vec4(f9(0.5))")},
        {"callDoublingBehindPrototypes",
         shader("float f(float x);\nfloat g(float x) { return f(x) + f(x); }\n"
                "float f(float x) { return g(x) + g(x); }\n",
                "vec4(g(0.5))")},
        {"recursion",
         shader("float f(float x) { return x < 0.1 ? x : f(x * 0.5) + f(x * 0.4); }\n", "vec4(f(1.0))")},
        {"sumOf50000", nested("", "0.1" + repeated("+.1", 50000), "", 0)},
        {"sumOf5000", nested("", "0.1" + repeated("+.1", 5000), "", 0)},
        {"signs10000", nested("- ", "0.5", "", 10000)},
        {"selections", nested("", "vec4(1.0)" + repeated(".xyzw", 8000), "", 0)},
        {"parentheses10000", nested("(", "0.5", ")", 10000)},
        {"nestedCalls", nested("sin(", "0.5", ")", 3000)},
        {"bracketsOutOfMacros", bracketsOutOfMacros()},
        {"blocks2000",
         shader("", "vec4(1.0)", repeated("if (gl_FragCoord.x > 0.5) {", 2000) + repeated("}", 2000))},
        {"statements2000",
         shader("", "vec4(y)", "float y = 0.0;\n" + repeated("if (y < 0.5) ", 2000) + "y = 1.0;\n")},
        {"elseChain2000", elseChain(2000)},
        {"longList", shader("", "vec4(a[3])", "float a[] = float[](0" + repeated(",0", 6000) + ");\n")},
        {"nul", shader("", "vec4(1.0)") + std::string(1, '\0') + "behind"},
        {"include", "#include \"/etc/passwd\"\n" + shader("", "vec4(1.0)")},
        {"continuedComment", "// \\\nfloat a[2000000000];\n" + shader("", "vec4(1.0)")},
        {"carriageReturn", "// \rfloat a[2000000000];\n" + shader("", "vec4(1.0)")},
        {"longText", shader(repeated("// nothing here\n", 5000), "vec4(1.0)")},
    };
}

} // namespace

std::string shader(const std::string& before, const std::string& colour, const std::string& statements) {
    return before + "void main()\n{\n" + statements + "gl_FragColor = " + colour + ";\n}\n";
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

std::string doublingMacros(int depth) {
    std::string text = "#define M0 0.5\n";
    for (int i = 1; i <= depth; ++i)
        text += "#define M" + number(i) + " M" + number(i - 1) + "+M" + number(i - 1) + "\n";
    return text;
}

std::string callingFunctions(int depth, int times) {
    std::string text = "float f0(float x) { return sin(x); }\n";
    for (int i = 1; i <= depth; ++i) {
        const std::string call = "f" + number(i - 1) + "(x * 0.9)";
        text += "float f" + number(i) + "(float x) { return " + call + repeated(" + " + call, times - 1) +
                "; }\n";
    }
    return text;
}

const std::vector<HostileText>& hostileTexts() {
    static const std::vector<HostileText> all = [] {
        std::vector<HostileText> texts = arrays();
        for (const auto& more : {macros(), others()}) texts.insert(texts.end(), more.begin(), more.end());
        return texts;
    }();
    return all;
}

const std::string& hostileText(const std::string& name) {
    for (const HostileText& hostile : hostileTexts())
        if (hostile.name == name) return hostile.text;
    throw std::out_of_range(name);
}

} // namespace workbench::test
