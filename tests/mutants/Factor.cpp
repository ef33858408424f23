// SPDX-License-Identifier: Apache-2.0
#include "tests/mutants/Modules.h"

#include "host/gl/GLError.h"
#include "host/gl/GLProgram.h"
#include "host/gl/Programmable.h"
#include "host/values/VValueTrait.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <locale>

namespace mutant {
namespace {

using namespace krod;

constexpr char VertexText[] = "void main() { gl_Position = ftransform(); }";
constexpr char Body[] = "uniform sampler2DMS SceneColor;\n"
                        "void main() {\n"
                        "    gl_FragColor = texelFetch(SceneColor, ivec2(gl_FragCoord.xy), 0) * Factor;\n"
                        "}\n";

std::string numberText(double value) {
    static int calls = 0;
    std::string text = VValueTrait<double>::Text(value);
    if (has(Fault::CommaInText))
        std::ranges::replace(text, '.', std::use_facet<std::numpunct<char>>(std::locale()).decimal_point());
    if (has(Fault::OneWithoutPoint) && value == 1.0) return "1";
    if (has(Fault::TextChanges)) text += "/*" + std::to_string(++calls) + "*/";
    if (has(Fault::DoesNotCompile)) text += '+';
    return text;
}

std::string bodyText() {
    if (!has(Fault::DiesOfShaderFile)) return Body;
    std::string text = Programmable::OptionalFileRead("Factor.frag", Body);
    if (text.find("main") == std::string::npos) die();
    return text;
}

class Renderer : public MSDeferredRenderObject::MultiSampleDeferredRenderer {
public:
    Renderer(VGLRenderContext& context, int samples, double factor)
        : MultiSampleDeferredRenderer(context, samples), factor(factor) {}

    void render() override {
        if (has(Fault::DiesOfSamples) && requestedSamples() == 17) die();
        GLProgram program(VertexText,
                          "#version 150\nconst float Factor = " + numberText(factor) + ";\n" + bodyText(),
                          "factor vertex", "factor fragment");
        program.use();
        program.setUniformValuei("SceneColor", scene().colorUnit, true);
        static int frames = 0;
        if (!has(Fault::PictureChanges) || ++frames % 2 != 0) glRenderFullScreen(1.0);
        GLError::throwPossibleError("quad", "Factor", 1);
        leaveBehind();
    }

private:
    static void leaveBehind() {
        if (has(Fault::OpenGlErrorLeft)) glEnable(0xFFFF);
        if (!has(Fault::TextureBound) && !has(Fault::TextureLeaked)) return;
        const GLenum target = has(Fault::TextureBound) ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D;
        GLuint texture = 0;
        glGenTextures(1, &texture);
        if (has(Fault::TextureBound)) glActiveTexture(GL_TEXTURE5);
        glBindTexture(target, texture);
        glActiveTexture(GL_TEXTURE0);
    }

    double factor;
};

} // namespace

Factor::Factor(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
    : MSDeferredObjectDisplay(name, preferences, {4, 0}) {}

StrongPtr<MSDeferredRenderObject::MultiSampleDeferredRenderer>
Factor::createRenderer(VGLRenderContext& context) {
    int samples = 4;
    double value = 1.0;
    readSamples(context.valuePool(), samples);
    factor.read(context.valuePool(), value);
    return StrongPtr<MultiSampleDeferredRenderer>(new Renderer(context, samples, value));
}

} // namespace mutant
