// SPDX-License-Identifier: Apache-2.0
#include "display/DisplayFrame.h"

#include "host/gl/GLError.h"
#include "host/gl/Programmable.h"
#include "host/values/VValueTrait.h"

#include <GL/gl.h>

namespace plime::display {

namespace {

constexpr char VertexText[] = "void main(void)\n{\n\tgl_Position = ftransform();\n}";
constexpr char VertexLabel[] = "* Internal Vertex Shader *";
constexpr char FragmentLabel[] = "* Internal Fragment Shader *";

} // namespace

std::string fragmentText(const std::string& prefix, const Body& body) {
    const std::string text =
        body.overrideFile ? krod::Programmable::OptionalFileRead(body.overrideFile, body.text) : body.text;
    return "#version 150\n" + prefix + text;
}

SceneProgram::SceneProgram(const std::string& prefix, const Body& body)
    : program(VertexText, fragmentText(prefix, body), VertexLabel, FragmentLabel) {
    program.use();
}

void SceneProgram::bindTextures(const krod::MSDeferredRenderObject::Scene& scene) {
    program.setUniformValuei("SceneColor", scene.colorUnit, program.reportsMissingUniforms());
    program.setUniformValuei("SceneDepth", scene.depthUnit, program.reportsMissingUniforms());
}

void SceneProgram::bindSampleCount(const krod::MSDeferredRenderObject::Scene& scene) {
    program.setUniformValuei("nSamples", scene.sampleCount, program.reportsMissingUniforms());
}

void quadState(DepthMask depthMask, Blend blend) {
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_COLOR_MATERIAL);
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    if (depthMask == DepthMask::OffAndOn) glDepthMask(GL_TRUE);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, blend == Blend::Glow ? GL_ONE : GL_ONE_MINUS_SRC_ALPHA);
}

void checkQuad(const Label& label) {
    const std::string line = krod::VValueTrait<int>::Text(label.line);
    krod::GLError::throwPossibleError(std::string(label.sourceFile) + "(" + line + "): Render QUAD",
                                      label.sourceFile, label.line);
}

} // namespace plime::display
