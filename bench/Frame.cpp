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
#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

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

/// The quad of the display, as short as OpenGL allows.
void quad() {
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [x, y] : {std::pair{-1.0f, -1.0f}, {1.0f, -1.0f}, {-1.0f, 1.0f}, {1.0f, 1.0f}})
        glVertex3f(x, y, 1.0f);
    glEnd();
}

/// The same frame without the host.
class BareFrame {
public:
    BareFrame(Network& network, const Frame& frame, int samples, const VValuePool& pool)
        : network(network),
          frame(frame),
          samples(samples),
          target(frame.width, frame.height, samples),
          context(pool, frame.width, frame.height),
          program(glCreateProgram()) {
        const auto text = workbench::captureShader(*network.display, pool).front().fragmentText;
        glAttachShader(program, compile(GL_VERTEX_SHADER, Vertex));
        glAttachShader(program, compile(GL_FRAGMENT_SHADER, text));
        glLinkProgram(program);
        colorPlace = glGetUniformLocation(program, "SceneColor");
        depthPlace = glGetUniformLocation(program, "SceneDepth");
        samplesPlace = glGetUniformLocation(program, "nSamples");
    }
    BareFrame(const BareFrame&) = delete;
    BareFrame& operator=(const BareFrame&) = delete;
    ~BareFrame() { glDeleteProgram(program); }

    void draw() {
        frame.begin();
        glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
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
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.depth);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.color);
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        quad();
        glUseProgram(0);
        glFinish();
    }

private:
    Network& network;
    const Frame& frame;
    int samples;
    Target target;
    VGLRenderContext context;
    unsigned program;
    int colorPlace, depthPlace, samplesPlace;
};

double secondsOf(const std::function<void()>& draw) {
    const auto start = std::chrono::steady_clock::now();
    draw();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Both frames in turn, so that a machine that changes its speed changes both; the median of the ratios counts.
void displayAndBare(benchmark::State& state) {
    workbench::RenderSession session;
    Network network;
    const VValuePool pool;
    const Frame frame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                      network.scene->bounds());
    BareFrame bare(network, frame, std::min(8, session.properties().maxSamples), pool); // CMYK asks for 8
    VGLRenderContext context(pool, frame.width, frame.height);
    const auto drawDisplay = [&] {
        frame.begin();
        network.display->render(context);
        glFinish();
    };
    const auto drawBare = [&] { bare.draw(); };
    drawDisplay(); // fills the caches
    drawBare();
    std::vector<double> ratios;
    for (auto _ : state) {
        const double display = secondsOf(drawDisplay);
        ratios.push_back(display / secondsOf(drawBare));
        state.SetIterationTime(display);
    }
    std::ranges::nth_element(ratios, ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2));
    state.counters["display/bare"] = ratios[ratios.size() / 2];
}

BENCHMARK(displayAndBare)->Args({1920, 1080})->Iterations(60)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(displayAndBare)->Args({64, 64})->Iterations(600)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace

int main(int argc, char** argv) {
    std::puts("CMYK against bare OpenGL; wanted: at most 1.10 at 1920x1080, at most 1.5 at 64x64");
    return bench::run(argc, argv, {});
}
