// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/EglContext.h"

#include "workbench/platform/EglDevice.h"
#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace workbench {
namespace {

constexpr int WantedMajor = 3, WantedMinor = 2;
constexpr const char* Wanted = "OpenGL 3.2 or newer with the compatibility profile";
constexpr const char* Advice =
    "Install a newer driver, or choose another device with --gpu (plime doctor lists them)";

std::string text(GLenum name) {
    const GLubyte* value = glGetString(name);
    return value == nullptr ? "" : reinterpret_cast<const char*>(value);
}

int integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

bool namesSoftware(const std::string& renderer) {
    const std::string name = lowerCase(renderer);
    const auto known = {"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader"};
    return std::any_of(known.begin(), known.end(),
                       [&](const char* word) { return name.find(word) != std::string::npos; });
}

bool isCompatibility(int version) {
    if (version <= 30) return true;
    const int mask = version >= 32 ? integer(GL_CONTEXT_PROFILE_MASK) : 0;
    if (mask != 0) return (mask & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT) != 0;
    return epoxy_has_gl_extension("GL_ARB_compatibility");
}

ContextProperties readProperties(bool softwareDevice) {
    ContextProperties facts;
    facts.vendor = text(GL_VENDOR);
    facts.renderer = text(GL_RENDERER);
    facts.version = text(GL_VERSION);
    facts.glslVersion = text(GL_SHADING_LANGUAGE_VERSION);
    const int version = epoxy_gl_version();
    facts.major = version / 10;
    facts.minor = version % 10;
    facts.maxTextureSize = integer(GL_MAX_TEXTURE_SIZE);
    facts.compatibility = isCompatibility(version);
    if (version >= WantedMajor * 10 + WantedMinor)
        facts.maxSamples =
            std::max(1, std::min({integer(GL_MAX_SAMPLES), integer(GL_MAX_COLOR_TEXTURE_SAMPLES),
                                  integer(GL_MAX_DEPTH_TEXTURE_SAMPLES)}));
    facts.software = softwareDevice || namesSoftware(facts.renderer);
    facts.debug = epoxy_has_gl_extension("GL_KHR_debug");
    while (glGetError() != GL_NO_ERROR) {
    }
    return facts;
}

void requireUsable(const ContextProperties& facts) {
    const bool tooOld = facts.major * 10 + facts.minor < WantedMajor * 10 + WantedMinor;
    if (!tooOld && facts.compatibility) return;
    throw Failure(Fault::OpenGL,
                  {"OpenGL on " + facts.renderer,
                   tooOld ? "is too old" : "lacks the functions that modules use",
                   Wanted,
                   "OpenGL " + facts.version + (facts.compatibility ? "" : " with the core profile only"),
                   Advice,
                   {}});
}

EGLConfig chooseConfig(EGLDisplay display, const std::string& label) {
    constexpr std::array<EGLint, 5> Attributes{EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, 0,
                                               EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, Attributes.data(), &config, 1, &count) == EGL_TRUE && count > 0)
        return config;
    throw Failure(Fault::OpenGL, {label, "cannot draw with OpenGL", Wanted, "no format for it", Advice, {}});
}

/// Asks for the wanted version first. A driver that refuses is asked for whatever it has, so that the message
/// can say what that is.
EGLContext newContext(EGLDisplay display, ContextProfile profile, const std::string& label) {
    if (!epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context"))
        throw Failure(Fault::OpenGL, {label,
                                      "cannot draw without a window",
                                      "EGL_KHR_surfaceless_context",
                                      "a driver without it",
                                      Advice,
                                      {}});
    const EGLConfig config = chooseConfig(display, label);
    const EGLint mask = profile == ContextProfile::Core ? EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT_KHR
                                                        : EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT_KHR;
    const std::array<EGLint, 7> wanted{EGL_CONTEXT_MAJOR_VERSION_KHR,
                                       WantedMajor,
                                       EGL_CONTEXT_MINOR_VERSION_KHR,
                                       WantedMinor,
                                       EGL_CONTEXT_OPENGL_PROFILE_MASK_KHR,
                                       mask,
                                       EGL_NONE};
    const EGLint whatever = EGL_NONE;
    EGLContext context = EGL_NO_CONTEXT;
    if (epoxy_has_egl_extension(display, "EGL_KHR_create_context"))
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, wanted.data());
    if (context == EGL_NO_CONTEXT) context = eglCreateContext(display, config, EGL_NO_CONTEXT, &whatever);
    if (context != EGL_NO_CONTEXT) return context;
    throw Failure(Fault::OpenGL, {label, "gives no OpenGL context", Wanted, eglErrorText(), Advice, {}});
}

/// Whether the device may be meant, as far as EGL can tell before there is a context.
bool mayBeMeant(const EglDevice& device, std::size_t index, std::size_t count, const GpuChoice& choice) {
    switch (choice.kind) {
    case GpuChoice::Kind::Software:
        return device.software || device.handle == nullptr;
    // The surfaceless platform repeats one of the devices: it has a number only where nothing else has.
    case GpuChoice::Kind::Index:
        return index == static_cast<std::size_t>(choice.index) && (device.handle != nullptr || count == 1);
    default:
        return true;
    }
}

bool isMeant(const ContextProperties& facts, const GpuChoice& choice) {
    if (choice.kind == GpuChoice::Kind::Software) return facts.software;
    if (choice.kind != GpuChoice::Kind::Name) return true;
    return lowerCase(facts.vendor + ' ' + facts.renderer).find(lowerCase(choice.name)) != std::string::npos;
}

/// The devices to try, in this order.
std::vector<EglDevice> devicesFor(const GpuChoice& choice) {
    const std::vector<EglDevice> all = eglDevices();
    std::vector<EglDevice> chosen;
    for (std::size_t i = 0; i < all.size(); ++i)
        if (mayBeMeant(all[i], i, all.size(), choice)) chosen.push_back(all[i]);
    std::stable_sort(chosen.begin(), chosen.end(), [](const EglDevice& a, const EglDevice& b) {
        const auto rank = [](const EglDevice& device) {
            return device.handle == nullptr ? 2 : device.software ? 1 : 0;
        };
        return rank(a) < rank(b);
    });
    return chosen;
}

/// Puts back what was current on this thread.
class CurrentContextGuard {
public:
    CurrentContextGuard()
        : api(eglQueryAPI()),
          display(eglGetCurrentDisplay()),
          context(eglGetCurrentContext()),
          draw(eglGetCurrentSurface(EGL_DRAW)),
          read(eglGetCurrentSurface(EGL_READ)) {}
    CurrentContextGuard(const CurrentContextGuard&) = delete;
    CurrentContextGuard& operator=(const CurrentContextGuard&) = delete;
    ~CurrentContextGuard() {
        eglBindAPI(api);
        if (context != EGL_NO_CONTEXT) eglMakeCurrent(display, draw, read, context);
    }

private:
    EGLenum api;
    EGLDisplay display;
    EGLContext context;
    EGLSurface draw, read;
};

} // namespace

struct EglContext::State {
    struct Closer {
        EGLDisplay owner;
        void operator()(void* made) const {
            eglBindAPI(EGL_OPENGL_API);
            if (eglGetCurrentContext() == made)
                eglMakeCurrent(owner, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglDestroyContext(owner, made);
        }
    };

    std::string label;
    EGLDisplay display;
    std::unique_ptr<void, Closer> context;
    ContextProperties properties;
};

EglContext::EglContext(EglContext&& other) noexcept = default;
EglContext& EglContext::operator=(EglContext&& other) noexcept = default;
EglContext::~EglContext() = default;

EglContext::EglContext(const EglDevice& device, ContextProfile profile) {
    const EGLDisplay display = openDisplay(device);
    eglBindAPI(EGL_OPENGL_API);
    std::unique_ptr<void, State::Closer> context(newContext(display, profile, device.label), {display});
    state = std::make_unique<State>(State{device.label, display, std::move(context), {}});
    makeCurrent();
    state->properties = readProperties(device.software);
    requireUsable(state->properties);
}

EglContext EglContext::create(const ContextRequest& request) {
    std::vector<std::string> tried;
    std::vector<Diagnostic> failures;
    for (const EglDevice& device : devicesFor(request.gpu)) {
        try {
            EglContext made(device, request.profile);
            if (isMeant(made.state->properties, request.gpu)) return made;
            tried.push_back(device.label + ": " + made.state->properties.renderer + ", not asked for");
        } catch (const Failure& failure) {
            tried.push_back(device.label + ": " + failure.what());
            failures.push_back(failure.diagnostic());
        }
    }
    Diagnostic message{"OpenGL",
                       "cannot be used as asked",
                       "the device \"" + request.gpu.text() + '"',
                       "no such device",
                       "See the devices with: plime doctor",
                       {}};
    if (tried.empty()) // none has the number
        for (const EglDevice& device : eglDevices()) tried.push_back(device.label + ", not asked for");
    if (!failures.empty() && request.gpu.kind != GpuChoice::Kind::Name) message = failures.front();
    message.details = std::move(tried);
    throw Failure(Fault::OpenGL, std::move(message));
}

void EglContext::makeCurrent() const {
    eglBindAPI(EGL_OPENGL_API);
    if (eglMakeCurrent(state->display, EGL_NO_SURFACE, EGL_NO_SURFACE, state->context.get()) == EGL_TRUE)
        return;
    throw Failure(Fault::OpenGL, {state->label,
                                  "cannot be used by this thread",
                                  "a context that no other thread uses",
                                  eglErrorText(),
                                  "",
                                  {}});
}

bool EglContext::isCurrent() const {
    return state != nullptr && eglQueryAPI() == EGL_OPENGL_API &&
           eglGetCurrentContext() == state->context.get();
}

const ContextProperties& EglContext::properties() const noexcept { return state->properties; }

std::vector<GpuDevice> listDevices() {
    std::vector<EglDevice> devices = eglDevices();
    if (devices.size() > 1 && devices.back().handle == nullptr) devices.pop_back();
    const CurrentContextGuard guard;
    std::vector<GpuDevice> list;
    for (const EglDevice& device : devices) {
        GpuDevice line{static_cast<int>(list.size()), "", device.label, device.software, ""};
        try {
            const EglContext context(device, ContextProfile::Compatibility);
            line.vendor = context.properties().vendor;
            line.renderer = context.properties().renderer;
            line.software = context.properties().software;
        } catch (const Failure& failure) {
            line.problem = failure.what();
        }
        list.push_back(std::move(line));
    }
    return list;
}

} // namespace workbench
