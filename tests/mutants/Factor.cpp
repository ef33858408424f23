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
#include <cstring>
#include <exception>
#include <locale>
#include <new>

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
    if (has(Fault::SettingOff) && value > 1.0) text = VValueTrait<double>::Text(value + 0.01);
    if (has(Fault::TextChanges)) text += "/*" + std::to_string(++calls) + "*/";
    if (has(Fault::DoesNotCompile)) text += '+';
    return text;
}

std::string bodyText() {
    if (!has(Fault::DiesOfShaderFile) && !has(Fault::StumblesOverShaderFile)) return Body;
    std::string text = Programmable::OptionalFileRead("Factor.frag", Body);
    if (has(Fault::DiesOfShaderFile) && text.find("main") == std::string::npos) die();
    if (has(Fault::StumblesOverShaderFile) && text != Body) text += '+';
    return text;
}

/// Whether OpenGL is there at all: texts are asked for without.
bool isDrawing() { return glGetString(GL_VERSION) != nullptr; }

bool isOnSecondDriver() {
    const auto* const name = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return name && std::strstr(name, "softpipe");
}

void* volatile lost = nullptr;

void loseMemory() {
    constexpr std::size_t Bytes = 20000;
    lost = std::memset(::operator new(Bytes), 1, Bytes);
}

void dieWithoutMemory() {
    void* const memory = ::operator new(300, std::nothrow);
    if (!memory) die();
    ::operator delete(memory);
}

void dieWithoutTexture() {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    if (texture == 0) die();
    glDeleteTextures(1, &texture);
}

void dieOfLostContext() {
    const GLenum error = glGetError();
    if (error == GL_CONTEXT_LOST) die();
    if (error != GL_NO_ERROR) throw GLError("quad", "Factor", 1, error);
}

void loseTextureOnce() {
    static GLuint texture = 0;
    if (texture == 0) glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glBindTexture(GL_TEXTURE_2D, 0);
}

/// The texture is gone for ever when the error is thrown.
void loseTextureOnFailure() {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    GLError::throwPossibleError("quad", "Factor", 1);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
}

class Renderer : public MSDeferredRenderObject::MultiSampleDeferredRenderer {
public:
    Renderer(VGLRenderContext& context, int samples, double factor)
        : MultiSampleDeferredRenderer(context, samples), factor(factor) {}

    void render() override {
        if (has(Fault::DiesOfSamples) && requestedSamples() == 17) die();
        if (!has(Fault::DiesOfRefusedProgram)) return drawQuad();
        try {
            drawQuad();
        } catch (const std::exception&) {
            die();
        }
    }

private:
    void drawQuad() {
        if (isDrawing()) misuseOpenGl();
        const std::string version = has(Fault::NeedsNewLanguage) ? "400" : "150";
        GLProgram program(VertexText,
                          "#version " + version + "\nconst float Factor = " + numberText(factor) + ";\n" +
                              bodyText(),
                          "factor vertex", "factor fragment");
        program.use();
        program.setUniformValuei("SceneColor", scene().colorUnit, true);
        static int frames = 0;
        const bool isLeftOut = (has(Fault::PictureChanges) && ++frames % 2 == 0) ||
                               (has(Fault::OtherOnSecondDriver) && isOnSecondDriver());
        if (!isLeftOut) glRenderFullScreen(1.0);
        if (has(Fault::TextureLeakedOnFailure)) loseTextureOnFailure();
        GLError::throwPossibleError("quad", "Factor", 1);
        leaveBehind();
    }

    static void misuseOpenGl() {
        if (has(Fault::RedMissing)) glColorMask(GL_FALSE, GL_TRUE, GL_TRUE, GL_TRUE);
        if (has(Fault::FrameMemoryLost)) loseMemory();
        if (has(Fault::DiesWithoutMemoryInDrawing)) dieWithoutMemory();
        if (has(Fault::DiesOfFailedOpenGl)) dieWithoutTexture();
        if (has(Fault::DiesOfLostContext)) dieOfLostContext();
        if (has(Fault::TextureEachLife)) loseTextureOnce();
        if (!has(Fault::ErrorHidden)) return;
        glEnable(0xFFFF);
        glGetError();
    }

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

AcceptInfoList Factor::accept(const WeakPtr<VObject>& object) const {
    if (has(Fault::DiesOfNothing) && !object.lock()) die();
    return MSDeferredObjectDisplay::accept(object);
}

BoundingSphere Factor::bounds() const {
    if (!has(Fault::SwallowsInBounds)) return MSDeferredObjectDisplay::bounds();
    try {
        return MSDeferredObjectDisplay::bounds();
    } catch (const std::exception&) {
        return {};
    }
}

StrongPtr<MSDeferredRenderObject::MultiSampleDeferredRenderer>
Factor::createRenderer(VGLRenderContext& context) {
    int samples = 4;
    double value = 1.0;
    readSamples(context.valuePool(), samples);
    factor.read(context.valuePool(), value);
    return StrongPtr<MultiSampleDeferredRenderer>(new Renderer(context, samples, value));
}

} // namespace mutant
