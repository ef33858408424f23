// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/EglContext.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <epoxy/gl.h>

#include <cstdlib>
#include <thread>
#include <utility>

using workbench::ContextProfile;
using workbench::ContextProperties;
using workbench::ContextRequest;
using workbench::EglContext;
using workbench::GpuChoice;
using workbench::parseGpuChoice;

namespace {

const GpuChoice Software = parseGpuChoice("software");

workbench::Diagnostic refusalOf(const ContextRequest& request) {
    try {
        const EglContext context = EglContext::create(request);
    } catch (const workbench::Failure& failure) {
        EXPECT_EQ(failure.fault(), workbench::Fault::OpenGL);
        return failure.diagnostic();
    }
    ADD_FAILURE() << "a context was made";
    return {};
}

TEST(EglContext, Software_context_has_what_modules_need) {
    const EglContext context = EglContext::create(Software);
    const ContextProperties& facts = context.properties();
    EXPECT_TRUE(context.isCurrent());
    EXPECT_TRUE(facts.compatibility);
    EXPECT_TRUE(facts.software);
    EXPECT_GE(facts.major * 10 + facts.minor, 32);
    EXPECT_GE(facts.maxTextureSize, 4096);
    EXPECT_GE(facts.maxSamples, 1);
    EXPECT_NE(facts.version.find("Compatibility"), std::string::npos) << facts.version;
    EXPECT_FALSE(facts.vendor.empty());
    EXPECT_FALSE(facts.glslVersion.empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(EglContext, Renderer_is_the_one_that_the_environment_asks_for) {
    const char* const driver = std::getenv("GALLIUM_DRIVER");
    ASSERT_NE(driver, nullptr) << "the test needs GALLIUM_DRIVER=llvmpipe or softpipe";
    const EglContext context = EglContext::create(Software);
    EXPECT_NE(context.properties().renderer.find(driver), std::string::npos) << context.properties().renderer;
    EXPECT_EQ(context.properties().maxSamples, std::string(driver) == "softpipe" ? 1 : 4);
}

TEST(EglContext, Device_is_chosen_by_number_and_by_part_of_its_name) {
    const auto devices = workbench::listDevices();
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices[0].problem, "");
    EXPECT_EQ(devices[0].index, 0);
    EXPECT_EQ(EglContext::create(parseGpuChoice("0")).properties().renderer, devices[0].renderer);
    EXPECT_NE(EglContext::create(parseGpuChoice("PIPE")).properties().renderer.find("pipe"),
              std::string::npos);
}

TEST(EglContext, Unknown_device_is_refused_with_the_list_of_all) {
    EXPECT_EQ(refusalOf({parseGpuChoice("97")}).expected, "the device \"97\"");
    const workbench::Diagnostic refusal = refusalOf({parseGpuChoice("Voodoo")});
    EXPECT_EQ(refusal.expected, "the device \"Voodoo\"");
    EXPECT_FALSE(refusal.details.empty());
}

TEST(EglContext, Core_profile_is_refused) {
    const workbench::Diagnostic refusal = refusalOf({Software, ContextProfile::Core});
    EXPECT_EQ(refusal.what, "lacks the functions that modules use");
    EXPECT_EQ(refusal.expected, "OpenGL 3.2 or newer with the compatibility profile");
    EXPECT_NE(refusal.got.find("core profile only"), std::string::npos) << refusal.got;
}

TEST(EglContext, Listing_devices_leaves_the_current_context_alone) {
    const EglContext context = EglContext::create(Software);
    EXPECT_FALSE(workbench::listDevices().empty());
    EXPECT_TRUE(context.isCurrent());
    GLuint texture = 0;
    glGenTextures(1, &texture);
    EXPECT_NE(texture, 0U);
    glDeleteTextures(1, &texture);
}

TEST(EglContext, End_of_one_context_leaves_the_other_usable) {
    const EglContext first = EglContext::create(Software);
    {
        const EglContext second = EglContext::create(Software);
        EXPECT_TRUE(second.isCurrent());
        EXPECT_FALSE(first.isCurrent());
    }
    EXPECT_FALSE(first.isCurrent());
    first.makeCurrent();
    EXPECT_TRUE(first.isCurrent());
    EXPECT_NE(glGetString(GL_VERSION), nullptr);
}

TEST(EglContext, Moved_context_stays_current) {
    EglContext first = EglContext::create(Software);
    const EglContext second(std::move(first));
    EXPECT_TRUE(second.isCurrent());
    EXPECT_FALSE(first.isCurrent());
}

TEST(EglContext, Context_of_another_thread_is_refused) {
    const EglContext context = EglContext::create(Software);
    std::thread([&] {
        EXPECT_FALSE(context.isCurrent());
        EXPECT_THROW(context.makeCurrent(), workbench::Failure);
    }).join();
    EXPECT_TRUE(context.isCurrent());
}

} // namespace
