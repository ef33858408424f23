// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ShaderFacts.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

using Names = std::vector<std::string>;

TEST(Shader_facts, name_uniforms_and_inputs_that_nobody_feeds) {
    EXPECT_EQ(unfedNames("#version 330 core\nuniform sampler2D frame;\nin vec2 uv;\nout vec4 c;\n"
                         "uniform float gain;\nvoid main() { c = gain * texture(frame, uv); }\n"),
              (Names{"the input uv", "the uniform gain"}));
    EXPECT_EQ(unfedNames("varying highp vec2 p; uniform sampler2D frame, lut; flat in int a[2], b;"
                         "void main() { gl_FragColor = texture2D(lut, p) * a[0] * b; }"),
              (Names{"the input p", "the uniform lut", "the input a", "the input b"}));
}

TEST(Shader_facts, leave_out_what_has_a_value_or_is_not_used) {
    EXPECT_EQ(unfedNames("uniform sampler2D frame;\nuniform float gain = 0.5, other[2] = float[2](1., 2.);\n"
                         "uniform vec3 unused; // in vec2 uv; uv\n/* uniform float x; x */\n"
                         "#define in_macro uniform float y; y\n"
                         "float f(in float a,\n in float b) { return a + b; }\n"
                         "void main() { gl_FragColor = vec4(f(gain, other[0])); }"),
              Names{});
    EXPECT_EQ(unfedNames(""), Names{});
    EXPECT_EQ(unfedNames("uniform"), Names{});
    EXPECT_EQ(unfedNames("uniform; in ; in float ;"), Names{});
}

TEST(Shader_facts, are_found_in_long_texts) {
    EXPECT_EQ(unfedNames(std::string(1 << 20, '\n') + "uniform float a;" + std::string(1 << 20, ' ') + "a"),
              Names{"the uniform a"});
}

TEST(Shader_facts, tell_who_asks_for_the_place_and_who_writes_a_colour) {
    EXPECT_FALSE(asksForPlace("texture2D(frame, gl_TexCoord[0].xy)"));
    EXPECT_TRUE(asksForPlace("texture2D(frame, 1.0 - gl_TexCoord[0].xy)"));
    EXPECT_TRUE(namesAnOutput("out vec4 c;"));
    EXPECT_FALSE(namesAnOutput("void main() {}"));
}

} // namespace
} // namespace workbench
