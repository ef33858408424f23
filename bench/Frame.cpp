// SPDX-License-Identifier: Apache-2.0
// One frame of a display against bare OpenGL: clear, the same object drawn, the same quad, finish, the
// program already linked, textures and framebuffers already made. Both draw into the same destination.
#include "Ratios.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/PluginManager.h"
#include "workbench/gl/Camera.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/platform/EglContext.h"

#include "host/core/VCreatorBase.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

using namespace krod;

constexpr char Vertex[] = "void main(void)\n{\n\tgl_Position = ftransform();\n}";

/// The modules under test: a scene with some depth, and CMYK in front of it.
class Network {
public:
    Network() {
        manager.load(TOVAR_PLIME);
        manager.load(WORKBENCH_OBJECTS);
        scene = make<VGLRenderObject>("Scene/Columns");
        display = make<MSDeferredObjectDisplay>("Display/CMYK");
        display->setInput(scene);
    }

private:
    template <class Module>
    static StrongPtr<Module> make(const char* key) {
        VCreationContext context;
        return castStrong<Module>(workbench::CreatorRegistry::find(key).front().creator->create("", context));
    }

    workbench::PluginManager manager;

public:
    StrongPtr<VGLRenderObject> scene;
    StrongPtr<MSDeferredObjectDisplay> display;
};

unsigned compile(GLenum kind, const std::string& text) {
    const unsigned shader = glCreateShader(kind);
    const char* source = text.c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    return shader;
}

/// A framebuffer of half RGBA colour and float depth; 0 samples: ordinary textures.
struct Target {
    Target(int width, int height, int samples)
        : kind(samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D) {
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        color = attach(GL_COLOR_ATTACHMENT0, GL_RGBA16F, width, height, samples);
        depth = attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT32F, width, height, samples);
        if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
            throw std::runtime_error("the driver refuses the framebuffer");
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() {
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &color);
        glDeleteTextures(1, &depth);
    }

    GLenum kind;
    unsigned framebuffer = 0, color = 0, depth = 0;

private:
    [[nodiscard]] unsigned attach(GLenum place, GLenum format, int width, int height, int samples) const {
        unsigned texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(kind, texture);
        if (samples > 0)
            glTexImage2DMultisample(kind, samples, format, width, height, GL_TRUE);
        else
            glTexStorage2D(kind, 1, format, width, height);
        glFramebufferTexture2D(GL_FRAMEBUFFER, place, kind, texture, 0);
        return texture;
    }
};

/// The destination that both draw into, and the camera.
class Frame {
public:
    Frame(int width, int height, const BoundingSphere& bounds)
        : width(width), height(height), target(width, height, 0) {
        const double aspect = static_cast<double>(width) / height;
        const auto camera = workbench::Camera::fitted(bounds, aspect);
        projection = camera.projection(aspect);
        view = camera.view();
    }

    void begin() const {
        glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
        glViewport(0, 0, width, height);
        loadCamera();
        glDisable(GL_SCISSOR_TEST);
        glDepthMask(GL_TRUE);
        glClearColor(0, 0, 0, 1);
        glClearDepth(1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }
    void loadCamera() const {
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(glm::value_ptr(projection));
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixd(glm::value_ptr(view));
    }

    int width, height;
    Target target;

private:
    glm::dmat4 projection{1}, view{1};
};

void display(benchmark::State& state) {
    workbench::RenderSession session;
    Network network;
    const VValuePool pool;
    const Frame frame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                      network.scene->bounds());
    VGLRenderContext context(pool, frame.width, frame.height);
    const auto draw = [&] {
        frame.begin();
        network.display->render(context);
        glFinish();
    };
    draw(); // fills the caches
    for (auto _ : state) draw();
}

/// The quad of the display, as short as OpenGL allows.
void quad() {
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [x, y] : {std::pair{-1.0f, -1.0f}, {1.0f, -1.0f}, {-1.0f, 1.0f}, {1.0f, 1.0f}})
        glVertex3f(x, y, 1.0f);
    glEnd();
}

void bare(benchmark::State& state) {
    workbench::RenderSession session;
    Network network;
    const VValuePool pool;
    const Frame frame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                      network.scene->bounds());
    const int samples = std::min(8, session.properties().maxSamples); // CMYK asks for 8
    const Target scene(frame.width, frame.height, samples);
    VGLRenderContext context(pool, frame.width, frame.height);

    const unsigned program = glCreateProgram();
    glAttachShader(program, compile(GL_VERTEX_SHADER, Vertex));
    glAttachShader(program, compile(GL_FRAGMENT_SHADER,
                                    workbench::captureShader(*network.display, pool).front().fragmentText));
    glLinkProgram(program);
    const int colorPlace = glGetUniformLocation(program, "SceneColor"),
              depthPlace = glGetUniformLocation(program, "SceneDepth"),
              samplesPlace = glGetUniformLocation(program, "nSamples");

    const auto draw = [&] {
        frame.begin();
        glBindFramebuffer(GL_FRAMEBUFFER, scene.framebuffer);
        glDisable(GL_BLEND);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        network.scene->render(context);

        glBindFramebuffer(GL_FRAMEBUFFER, frame.target.framebuffer);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glUseProgram(program);
        glUniform1i(colorPlace, 0);
        glUniform1i(depthPlace, 1);
        glUniform1i(samplesPlace, samples);
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, scene.depth);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, scene.color);
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        quad();
        glUseProgram(0);
        glFinish();
    };
    draw();
    for (auto _ : state) draw();
    glDeleteProgram(program);
}

constexpr auto Unit = benchmark::kMillisecond;
void both(benchmark::internal::Benchmark* benchmark) {
    benchmark->Args({1920, 1080})
        ->Args({64, 64})
        ->Unit(Unit)
        ->UseRealTime()
        ->Repetitions(7)
        ->ReportAggregatesOnly();
}
BENCHMARK(display)->Apply(both);
BENCHMARK(bare)->Apply(both);

} // namespace

int main(int argc, char** argv) {
    return bench::run(
        argc, argv,
        {{"CMYK / bare OpenGL at 1920x1080", "display/1920/1080", "bare/1920/1080", "at most 1.10"},
         {"CMYK / bare OpenGL at 64x64", "display/64/64", "bare/64/64", "at most 1.5"}});
}
