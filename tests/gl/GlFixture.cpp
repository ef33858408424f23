// SPDX-License-Identifier: Apache-2.0
#include "GlFixture.h"

#include "host/gl/GLError.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace workbench::test {
namespace {

SessionOptions softwareOptions(SessionOptions options) {
    setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
    options.gpu.kind = GpuChoice::Kind::Software;
    return options;
}

} // namespace

int Warnings::count(const std::string& text) const {
    return static_cast<int>(std::count_if(heard.begin(), heard.end(), [&](const std::string& warning) {
        return warning.find(text) != std::string::npos;
    }));
}

GlTest::GlTest(SessionOptions options) : session(softwareOptions(options)) {}

bool onSoftpipe() {
    const char* driver = std::getenv("GALLIUM_DRIVER");
    return driver && std::string_view(driver) == "softpipe";
}

krod::StrongPtr<krod::VGLRenderObject> object(TestObject::Draw draw) {
    return krod::StrongPtr<krod::VGLRenderObject>(new TestObject(std::move(draw)));
}

krod::StrongPtr<TestDisplay> display(TestDisplay::Render render, int samples) {
    return krod::StrongPtr<TestDisplay>(new TestDisplay(std::move(render), samples));
}

void nothing(krod::VGLRenderContext&) {}

void fill(krod::VGLRenderContext&) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
    glColor4d(0.25, 0.5, 0.75, 1);
    glRectd(-1, -1, 1, 1);
}

std::string vertexText() { return "void main(void)\n{\n\tgl_Position = ftransform();\n}"; }

std::string averageText() {
    return "#version 150\n"
           "uniform int nSamples;\n"
           "uniform sampler2DMS SceneColor;\n"
           "uniform sampler2DMS SceneDepth;\n"
           "void main()\n"
           "{\n"
           "    ivec2 P = ivec2(gl_FragCoord.xy);\n"
           "    vec4 color = texelFetch(SceneColor, P, 0);\n"
           "    float depth = texelFetch(SceneDepth, P, 0).r;\n"
           "    for (int i = 1; i < nSamples; i++) {\n"
           "        color += texelFetch(SceneColor, P, i);\n"
           "        depth = min(depth, texelFetch(SceneDepth, P, i).r);\n"
           "    }\n"
           "    gl_FragColor = color / float(nSamples);\n"
           "    gl_FragDepth = depth;\n"
           "}\n";
}

void average(TestDisplay::Renderer& renderer) { shade(renderer, averageText()); }

void shade(TestDisplay::Renderer& renderer, const std::string& fragmentText) {
    krod::GLProgram program(vertexText(), fragmentText, "vertex", "fragment");
    program.use();
    program.setUniformValuei("SceneColor", renderer.scene().colorUnit, program.reportsMissingUniforms());
    program.setUniformValuei("SceneDepth", renderer.scene().depthUnit, program.reportsMissingUniforms());
    program.setUniformValuei("nSamples", renderer.scene().sampleCount, program.reportsMissingUniforms());
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    renderer.glRenderFullScreen(1.0);
    krod::GLError::throwPossibleError("quad", "GlFixture", 1);
}

FrameSetup frame(int width, int height) {
    FrameSetup setup;
    setup.width = width;
    setup.height = height;
    return setup;
}

} // namespace workbench::test
