// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/EglDevice.h"

#include "workbench/platform/ProcessLimits.h"
#include "workbench/report/Failure.h"

#include <cstdint>
#include <map>
#include <string_view>

namespace workbench {
namespace {

/// Whether a list of words separated by spaces holds `word`.
bool listHas(const char* list, std::string_view word) {
    const std::string padded = ' ' + std::string(list == nullptr ? "" : list) + ' ';
    return padded.find(' ' + std::string(word) + ' ') != std::string::npos;
}

void addEnumeratedDevices(std::vector<EglDevice>& devices) {
    EGLint count = 0;
    if (eglQueryDevicesEXT(0, nullptr, &count) != EGL_TRUE || count <= 0) return;
    std::vector<EGLDeviceEXT> handles(static_cast<std::size_t>(count));
    if (eglQueryDevicesEXT(count, handles.data(), &count) != EGL_TRUE) return;
    handles.resize(static_cast<std::size_t>(count));
    for (EGLDeviceEXT handle : handles) {
        const char* extensions = eglQueryDeviceStringEXT(handle, EGL_EXTENSIONS);
        devices.push_back({handle, listHas(extensions, "EGL_MESA_device_software"),
                           "EGL device " + std::to_string(devices.size())});
    }
}

/// What a software driver with its compiler takes, as measured; a driver that finds less ends the process.
void requireRoomOnce() {
    constexpr std::uint64_t Addresses = std::uint64_t{640} << 20, Files = 16;
    static const bool isThere = (requireRoomFor("OpenGL", Addresses + bytesOfThreads(), Files), true);
    static_cast<void>(isThere);
}

} // namespace

std::string eglErrorText() {
    static const std::map<EGLint, const char*> names{
        {EGL_NOT_INITIALIZED, "EGL_NOT_INITIALIZED"},
        {EGL_BAD_ACCESS, "EGL_BAD_ACCESS"},
        {EGL_BAD_ALLOC, "EGL_BAD_ALLOC"},
        {EGL_BAD_ATTRIBUTE, "EGL_BAD_ATTRIBUTE"},
        {EGL_BAD_CONFIG, "EGL_BAD_CONFIG"},
        {EGL_BAD_CONTEXT, "EGL_BAD_CONTEXT"},
        {EGL_BAD_DISPLAY, "EGL_BAD_DISPLAY"},
        {EGL_BAD_MATCH, "EGL_BAD_MATCH"},
        {EGL_BAD_PARAMETER, "EGL_BAD_PARAMETER"},
        {EGL_CONTEXT_LOST, "EGL_CONTEXT_LOST"},
        {EGL_BAD_DEVICE_EXT, "EGL_BAD_DEVICE_EXT"},
        {EGL_SUCCESS, "no reason given"},
    };
    const EGLint error = eglGetError();
    const auto found = names.find(error);
    return found != names.end() ? found->second : "EGL error " + std::to_string(error);
}

std::vector<EglDevice> eglDevices() {
    requireRoomOnce();
    // epoxy ends the process when it cannot open EGL, and it must be asked before any other call.
    if (!epoxy_has_egl())
        throw Failure(Fault::OpenGL, {"OpenGL",
                                      "cannot be used without a window",
                                      "the library libEGL.so.1",
                                      "none that works",
                                      "Install libegl1 and an OpenGL driver",
                                      {}});
    std::vector<EglDevice> devices;
    const char* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const bool platforms = listHas(extensions, "EGL_EXT_platform_base");
    const bool enumerates =
        listHas(extensions, "EGL_EXT_device_base") ||
        (listHas(extensions, "EGL_EXT_device_enumeration") && listHas(extensions, "EGL_EXT_device_query"));
    if (platforms && enumerates && listHas(extensions, "EGL_EXT_platform_device"))
        addEnumeratedDevices(devices);
    if (platforms && listHas(extensions, "EGL_MESA_platform_surfaceless"))
        devices.push_back({nullptr, false, "EGL surfaceless platform"});
    if (devices.empty())
        throw Failure(Fault::OpenGL, {"OpenGL",
                                      "cannot be used without a window",
                                      "an EGL driver with the device or the surfaceless platform",
                                      "none",
                                      "Install an OpenGL driver; Mesa's software renderer will do",
                                      {}});
    return devices;
}

EGLDisplay openDisplay(const EglDevice& device) {
    const EGLDisplay display =
        device.handle != nullptr
            ? eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, device.handle, nullptr)
            : eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    // Initialising a display again changes nothing.
    if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE) return display;
    throw Failure(Fault::OpenGL, {device.label,
                                  "cannot be opened",
                                  "an initialised display",
                                  eglErrorText(),
                                  "Choose another device with --gpu, or check its driver and permissions",
                                  {}});
}

} // namespace workbench
