// SPDX-License-Identifier: Apache-2.0
// Each test runs alone, with an environment that makes the machine look as its name says.
#include "workbench/platform/EglContext.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

namespace {

std::string sentence() {
    try {
        const auto context = workbench::EglContext::create(workbench::GpuChoice{});
    } catch (const workbench::Failure& failure) {
        EXPECT_EQ(failure.fault(), workbench::Fault::OpenGL);
        return failure.what();
    }
    ADD_FAILURE() << "a context was made";
    return {};
}

TEST(EglRefusal, Old_OpenGL_is_named) {
    const std::string text = sentence();
    EXPECT_NE(
        text.find("is too old — expected OpenGL 3.2 or newer with the compatibility profile, got OpenGL 2.1"),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("Install a newer driver, or choose another device with --gpu"), std::string::npos)
        << text;
    const auto devices = workbench::listDevices();
    ASSERT_FALSE(devices.empty());
    EXPECT_NE(devices[0].problem.find("is too old"), std::string::npos);
}

TEST(EglRefusal, No_driver_is_named) {
    EXPECT_EQ(sentence(),
              "OpenGL: cannot be used without a window — expected an EGL driver with the device or the "
              "surfaceless platform, got none. Install an OpenGL driver; Mesa's software renderer will do.");
}

TEST(EglRefusal, No_EGL_is_named) {
    EXPECT_EQ(sentence(),
              "OpenGL: cannot be used without a window — expected the library libEGL.so.1, got none that "
              "works. Install libegl1 and an OpenGL driver.");
    EXPECT_THROW((void)workbench::listDevices(), workbench::Failure);
}

} // namespace
