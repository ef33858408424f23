// SPDX-License-Identifier: Apache-2.0
#include "display/DisplayFrame.h"

#include "host/gl/GLError.h"
#include "host/gl/Programmable.h"
#include "host/values/VValueTrait.h"

#include <GL/gl.h>

#include <limits>

namespace plime::display {

namespace {

constexpr char VertexText[] = "void main(void)\n{\n\tgl_Position = ftransform();\n}";
constexpr char VertexLabel[] = "* Internal Vertex Shader *";
constexpr char FragmentLabel[] = "* Internal Fragment Shader *";

} // namespace

bool flagIsOn(const krod::TypedSlot<FlagList>& flags, const krod::VValuePool& pool, const std::string& name) {
    FlagList list;
    bool on = false;
    return flags.read(pool, list) && list(name, on) && on;
}

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

void SceneProgram::bindValue(const std::string& name, double value) {
    static_assert(std::numeric_limits<float>::is_iec559, "values beyond single precision become infinite");
    program.setUniformValuef(name, static_cast<float>(value), program.reportsMissingUniforms());
}

void quadState(DepthTest depthTest, DepthMask depthMask, Blend blend) {
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_COLOR_MATERIAL);
    glEnable(GL_DEPTH_TEST);
    if (depthTest == DepthTest::OnAndOff) glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    if (depthMask == DepthMask::OffAndOn) glDepthMask(GL_TRUE);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    switch (blend) {
    case Blend::Over:
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        break;
    case Blend::Glow:
        glBlendFunc(GL_SRC_ALPHA, GL_ONE);
        break;
    case Blend::AsItStands:
        break;
    case Blend::OnAndOff:
        glDisable(GL_BLEND);
        break;
    }
}

void depthMaskOffAndOn() {
    glDepthMask(GL_FALSE);
    glDepthMask(GL_TRUE);
}

void checkQuad(const Label& label) {
    const std::string line = krod::VValueTrait<int>::Text(label.line);
    krod::GLError::throwPossibleError(std::string(label.sourceFile) + "(" + line + "): Render QUAD",
                                      label.sourceFile, label.line);
}

} // namespace plime::display
