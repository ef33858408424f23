// SPDX-License-Identifier: Apache-2.0
#include "SamplePattern.h"

#include "host/gl/GLError.h"
#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace parity {
namespace {

constexpr char VertexText[] = "#version 130\nvoid main() { gl_Position = gl_Vertex; }\n";
constexpr char FragmentText[] = "#version 130\n"
                                "uniform sampler2D colors, depths;\n"
                                "void main() {\n"
                                "    ivec2 P = ivec2(gl_FragCoord.xy);\n"
                                "    gl_FragColor = texelFetch(colors, P, 0);\n"
                                "    gl_FragDepth = texelFetch(depths, P, 0).r;\n"
                                "}\n";

/// A float texture on a unit of its own, for as long as it lives.
class FloatTexture {
public:
    explicit FloatTexture(GLenum unit) {
        glGenTextures(1, &name);
        glActiveTexture(unit);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    FloatTexture(const FloatTexture&) = delete;
    FloatTexture& operator=(const FloatTexture&) = delete;
    ~FloatTexture() { glDeleteTextures(1, &name); }

private:
    GLuint name = 0;
};

struct Layer {
    std::vector<float> colors, depths;
};

Layer layerOf(const SamplePattern::Values& values, int width, int height, int sample) {
    Layer layer;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const SceneSample value = values(x, y, sample);
            layer.colors.insert(layer.colors.end(), {value.r, value.g, value.b, value.a});
            layer.depths.push_back(value.depth);
        }
    return layer;
}

/// Every fragment is written, with the colour and the depth that it brings.
void writeEverything() {
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_ALWAYS);
    glDepthMask(GL_TRUE);
    glEnable(GL_SAMPLE_MASK);
}

} // namespace

void SamplePattern::draw(krod::VGLRenderContext& context) {
    const int width = context.width(), height = context.height();
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES, &samples);
    drawnSamples = std::max(1, samples);

    krod::GLProgram program(VertexText, FragmentText, "pattern vertex shader", "pattern fragment shader");
    program.use();
    program.setUniformValuei("colors", 0, true);
    program.setUniformValuei("depths", 1, true);
    const FloatTexture depths(GL_TEXTURE1), colors(GL_TEXTURE0);
    writeEverything();
    for (int sample = 0; sample < drawnSamples; ++sample) {
        const Layer layer = layerOf(values, width, height, sample);
        glActiveTexture(GL_TEXTURE1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_R32F, width, height, 0, GL_RED, GL_FLOAT, layer.depths.data());
        glActiveTexture(GL_TEXTURE0);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, width, height, 0, GL_RGBA, GL_FLOAT, layer.colors.data());
        glSampleMaski(0, GLbitfield{1} << sample);
        glRectf(-1, -1, 1, 1);
    }
    krod::GLError::throwPossibleError("pattern", "SamplePattern", 0);
}

} // namespace parity
