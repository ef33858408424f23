// SPDX-License-Identifier: Apache-2.0
// Proof that these tests meet the recording library and not the real one.
#include "recording/Recording.h"
#include "tests/support/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::vector<std::string> loadedLibraries() {
    std::vector<std::string> paths;
    const auto collect = [](dl_phdr_info* info, std::size_t, void* list) {
        static_cast<std::vector<std::string>*>(list)->emplace_back(info->dlpi_name);
        return 0;
    };
    dl_iterate_phdr(collect, &paths);
    return paths;
}

std::vector<std::string> loadedUnderName(const std::string& beginning) {
    std::vector<std::string> found = loadedLibraries();
    std::erase_if(found, [&](const std::string& path) {
        return !std::filesystem::path(path).filename().string().starts_with(beginning);
    });
    return found;
}

TEST(Recording, Library_loadedWithThePlugin_isTheRecordingOneOnly) {
    const support::LoadedPlugin plugin;
    const auto loaded = loadedUnderName("libkrod_gl.so");
    ASSERT_EQ(loaded.size(), 1U);
    EXPECT_TRUE(std::filesystem::equivalent(loaded[0], RECORDING_LIBRARY)) << loaded[0];
}

/// The plug-in itself loads libOpenGL, which has functions of the same names.
TEST(Recording, Library_glFunctions_comeBeforeThoseOfOpenGL) {
    const support::LoadedPlugin plugin;
    ASSERT_EQ(loadedUnderName("libOpenGL.so").size(), 1U);
    for (const char* function : {"glEnable", "glDisable", "glDepthMask", "glBlendFunc"}) {
        Dl_info place{};
        ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, function), &place), 0) << function;
        EXPECT_TRUE(std::filesystem::equivalent(place.dli_fname, RECORDING_LIBRARY))
            << function << " comes from " << place.dli_fname;
    }
}

TEST(Recording, CallLog_words_areCountedByLine) {
    support::CallLog log;
    log.add("glEnable(GL_BLEND)");
    log.add("glEnable(GL_LIGHTING)");
    EXPECT_EQ(log.count("glEnable"), 2U);
    EXPECT_EQ(log.count("glDisable"), 0U);
    EXPECT_EQ(log.text(), "glEnable(GL_BLEND)\nglEnable(GL_LIGHTING)\n");
}

} // namespace
