// SPDX-License-Identifier: Apache-2.0
// The required parameters of all fifteen modules: order, types, initial values, limits and expert levels. No golden
// holds them.
#include "tests/support/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace krod;
using Pair = FixedArray<double, 2>;
using Processor = StrongPtr<ImageTileProcessor>;

struct Module {
    const char* key;
    const char* parameters; ///< one line each
    const char* output;     ///< name and type
};

constexpr char Program[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                           "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                           "\tgl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);\n}\n";
constexpr char Images[] = "ImageProcessor processor\n";
constexpr char RedGreenBlueAlpha[] = "red double 0.0, min -1.0, max 1.0, level 0\n"
                                     "green double 0.0, min -1.0, max 1.0, level 0\n"
                                     "blue double 0.0, min -1.0, max 1.0, level 0\n"
                                     "alpha double 0.0, min -1.0, max 1.0, level 0\n";

constexpr std::array Modules = {
    Module{"Hollywood/ArcTangens", "", Images},
    Module{"Display/Blurred",
           "samples int 1, max 16, level 2\n"
           "InputVisibility bool true, level 10\n"
           "width double 1.0, min 3.0, max 20.0, level 0\n"
           "exponent double 0.0, min -0.5, max 0.5, level 0\n"
           "options flags -glow, level 0\n",
           ""},
    Module{"Display/CMYK",
           "samples int 8, max 16, level 0\n"
           "InputVisibility bool true, level 10\n"
           "options flags -glow -halo, level 0\n",
           ""},
    Module{"Display/CurveAdjust",
           "samples int 8, max 16, level 0\n"
           "InputVisibility bool true, level 10\n"
           "p pair 0.5 and 0.5, level 0\n"
           "channels flags +1 +2 +3, level 0\n",
           ""},
    Module{"Display/Depth@DisplayDepth", "InputVisibility bool true, level 10\n", ""},
    Module{"Hollywood/ColorGammaCorrection", RedGreenBlueAlpha, Images},
    Module{"Hollywood/GammaCorrection", "", Images},
    Module{"Hollywood/HDRColoredToneMapping", RedGreenBlueAlpha, Images},
    Module{"Display/Depth@HDRObjectDisplay",
           "samples int 1, max 16, level 2\n"
           "InputVisibility bool true, level 10\n"
           "offset double 0.0, min -1.0, max 1.0, level 1\n"
           "exponent double 0.0, min -2.0, max 10.0, level 0\n"
           "TransparencyExponent double 0.0, min -1.0, max 3.0, level 2\n"
           "options flags -glow, level 0\n",
           ""},
    Module{"Hollywood/HDRToneMapping",
           "offset double 0.0, min -1.0, max 1.0, level 0\n"
           "exponent double 0.0, min -1.0, max 1.0, level 0\n",
           Images},
    Module{"Display/HSVAdjust",
           "samples int 8, max 16, level 0\n"
           "InputVisibility bool true, level 10\n"
           "hue double 0.0, max 180.0, level 0\n"
           "saturation double 1.0, level 0\n"
           "value double 1.0, level 0\n"
           "channels flags +1 +2 +3, level 0\n",
           ""},
    Module{"Hollywood/PixelBlur",
           "width int 3, min 1, max 20, level 0\n"
           "brightness double 1.5, max 3.0, level 0\n"
           "sharpness double 1.5, max 10.0, level 0\n",
           Images},
    Module{"Display/PixelContours",
           "samples int 1, max 16, level 2\n"
           "InputVisibility bool true, level 10\n"
           "width int 0, min 0, max 5, level 1\n"
           "strength double 0.0, level 0\n"
           "luminance double 0.0, level 0\n"
           "options flags -glow, level 0\n",
           ""},
    Module{"Display/ProximityHDR",
           "samples int 1, max 16, level 2\n"
           "InputVisibility bool true, level 10\n"
           "width int 1, min 0, max 5, level 1\n"
           "strength double 0.5, level 0\n"
           "gamma double 1.0, max 15.0, level 0\n"
           "brightness double 1.0, max 10.0, level 0\n"
           "options flags -glow, level 1\n",
           ""},
    Module{"Hollywood/TileProgram", "code text PROGRAM, level 0\n", Images},
};

template <class T>
const T* held(const VValueBase& value) {
    const auto* typed = dynamic_cast<const TypedValue<T>*>(&value);
    return typed ? &typed->value() : nullptr;
}

/// The type in a word, and the value: "double 1.0".
std::string typeAndValue(const VValueBase& value) {
    if (held<int>(value)) return "int " + value.text();
    if (held<double>(value)) return "double " + value.text();
    if (const bool* state = held<bool>(value)) return std::string("bool ") + (*state ? "true" : "false");
    if (held<FlagList>(value)) return "flags " + value.text();
    if (const Pair* pair = held<Pair>(value))
        return "pair " + VValueTrait<double>::Text((*pair)[0]) + " and " +
               VValueTrait<double>::Text((*pair)[1]);
    if (const std::string* text = held<std::string>(value))
        return "text " + (*text == Program ? "PROGRAM" : '"' + *text + '"');
    return "of another type";
}

/// The same for a limit, which has the parameter's type.
std::string limitOf(const VParameter& parameter, const std::string& key) {
    const auto limit = parameter.property(key);
    if (!limit) return "";
    EXPECT_EQ(limit->type(), parameter.value().type()) << parameter.name();
    return ", " + key + ' ' + limit->text();
}

std::string parametersOf(const VObject& module) {
    std::string lines;
    for (const auto& input : module.slots().inputs()) {
        EXPECT_EQ(input.name, input.parameter->name());
        lines += input.name + ' ' + typeAndValue(input.parameter->value()) +
                 limitOf(*input.parameter, "min") + limitOf(*input.parameter, "max") + ", level " +
                 VValueTrait<int>::Text(input.expertLevel) + '\n';
    }
    return lines;
}

std::string outputsOf(const VObject& module) {
    std::string lines;
    for (const auto& output : module.slots().outputs())
        lines += output.name +
                 (held<Processor>(output.parameter->value()) ? " processor\n" : " of another type\n");
    return lines;
}

void PrintTo(const Module& module, std::ostream* stream) { *stream << module.key; }

class RequiredParameters : public testing::TestWithParam<Module> {};

std::string nameOf(const testing::TestParamInfo<Module>& module) {
    std::string name = module.param.key;
    for (char& letter : name)
        if (letter == '/' || letter == '@') letter = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Text, RequiredParameters, testing::ValuesIn(Modules), nameOf);

TEST_P(RequiredParameters, areDeclaredInOrderWithTypesInitialValuesLimitsAndLevels) {
    const support::LoadedPlugin plugin;
    const auto module = plugin.make(GetParam().key);
    EXPECT_EQ(parametersOf(*module), GetParam().parameters);
    EXPECT_EQ(outputsOf(*module), GetParam().output);
}

/// A new module reports every parameter at its initial value, none of which was set.
TEST_P(RequiredParameters, countAsNeverSet) {
    const support::LoadedPlugin plugin;
    const auto module = plugin.make(GetParam().key);
    for (const auto& input : module->slots().inputs()) {
        const VParameter::LocalValue read = input.parameter->getLocalValue(VValuePool());
        EXPECT_TRUE(read.value) << input.name;
        EXPECT_FALSE(read.set) << input.name;
        EXPECT_EQ(input.parameter->creator(), module) << input.name;
    }
}

/// 147 characters, with which user shaders start.
TEST(RequiredTexts, ofTileProgram_hasItsLength) { EXPECT_EQ(std::string_view(Program).size(), 147U); }

} // namespace
