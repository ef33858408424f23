// SPDX-License-Identifier: Apache-2.0
// The places where EGL can draw without a window. Used by EglContext only: whoever includes this gets EGL's
// names.
#pragma once

#include <epoxy/egl.h>

#include <string>
#include <vector>

namespace workbench {

/// One device of EGL_EXT_device_enumeration, or Mesa's surfaceless platform, which chooses a device by
/// itself.
struct EglDevice {
    EGLDeviceEXT handle = nullptr; ///< null for the surfaceless platform
    bool software = false;         ///< EGL says that it draws on the processor
    std::string label;             ///< for messages: "EGL device 0", "EGL surfaceless platform"
};

/// All devices in EGL's order, the surfaceless platform last. Throws Failure(OpenGL) if there is no EGL at
/// all.
[[nodiscard]] std::vector<EglDevice> eglDevices();

/// The initialised display of a device. EGL has one for each device and process; it stays open until the
/// process ends, because closing it would end everybody's contexts and unload the driver. Throws
/// Failure(OpenGL).
[[nodiscard]] EGLDisplay openDisplay(const EglDevice& device);

/// EGL's latest error in words: "EGL_BAD_MATCH".
[[nodiscard]] std::string eglErrorText();

} // namespace workbench
