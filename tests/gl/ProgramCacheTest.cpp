// SPDX-License-Identifier: Apache-2.0
// Programs are compiled once, kept within bounds, and counted.
#include "GlFixture.h"

#include "tests/support/LoadedPlugin.h"
#include "workbench/gl/ProgramCache.h"
#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <array>
#include <ostream>

namespace workbench::test {
namespace {

class Programs : public GlTest {
protected:
    using GlTest::GlTest;

    ProgramCacheStatistics counts() { return session.programs().statistics(); }

    static std::string text(int number) {
        return "#version 150\n// " + std::to_string(number) + "\nvoid main() { gl_FragColor = vec4(1); }\n";
    }
    static void make(const std::string& fragmentText) {
        krod::GLProgram(vertexText(), fragmentText, "vertex", "fragment").use();
    }
};

TEST_F(Programs, Steady_frames_compile_nothing) {
    const auto shown = display(average);
    shown->setInput(object(fill));
    static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    EXPECT_EQ(counts().compiles, 1U);
    EXPECT_GT(counts().compileSeconds, 0);
    for (int i = 0; i < 20; ++i) static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    EXPECT_EQ(counts().compiles, 1U);
    EXPECT_EQ(counts().hits, 20U);
    EXPECT_EQ(counts().misses, 1U);
}

TEST_F(Programs, Cache_is_bounded_and_keeps_what_was_used_last) {
    make(text(0));
    for (int i = 1; i < 64; ++i) make(text(i));
    EXPECT_EQ(counts().entries, 64U);
    EXPECT_EQ(counts().evictions, 0U);
    make(text(0));
    make(text(64));
    EXPECT_EQ(counts().entries, 64U);
    EXPECT_EQ(counts().evictions, 1U);
    make(text(0));
    EXPECT_EQ(counts().compiles, 65U);
    make(text(1));
    EXPECT_EQ(counts().compiles, 66U);
}

TEST_F(Programs, Failure_is_remembered) {
    std::string first, second;
    const std::string broken = "#version 150\nvoid main() { nonsense; }\n";
    for (std::string* said : {&first, &second}) {
        try {
            make(broken);
            FAIL() << "nothing was thrown";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.fault(), Fault::Shader);
            *said = failure.what();
        }
    }
    EXPECT_EQ(first, second);
    EXPECT_EQ(counts().compiles, 1U);
    EXPECT_EQ(counts().failures, 1U);
    EXPECT_EQ(counts().hits, 1U);
}

TEST_F(Programs, Evicted_program_lives_as_long_as_it_is_used) {
    krod::GLProgram used(vertexText(), text(-1), "vertex", "fragment");
    for (int i = 0; i < 64; ++i) make(text(i));
    EXPECT_NO_THROW(used.use());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(Programs, Program_is_released_at_its_end) {
    {
        krod::GLProgram program(vertexText(), text(0), "vertex", "fragment");
        program.use();
    }
    GLint current = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    EXPECT_EQ(current, 0);
}

class ProgramsWithoutCache : public Programs {
protected:
    ProgramsWithoutCache() : Programs(SessionOptions{.cachedPrograms = 0}) {}
};

TEST_F(ProgramsWithoutCache, Every_program_is_compiled) {
    for (int i = 0; i < 3; ++i) make(text(0));
    EXPECT_EQ(counts().compiles, 3U);
    EXPECT_EQ(counts().hits, 0U);
    EXPECT_EQ(counts().entries, 0U);
}

/// A display of the plug-in and six values of one of its parameters. A parameter that stands in the shader's text makes
/// a program for each of its values; one that is a uniform, or only decides on state, makes none.
struct Slider {
    const char* name;
    const char* key;
    const char* parameter;
    bool inText;
    std::array<const char*, 6> values;
};

void PrintTo(const Slider& slider, std::ostream* out) { *out << slider.name; }

constexpr std::array<const char*, 6> Numbers{"0.1", "0.15", "0.2", "0.25", "0.3", "0.35"};
constexpr std::array<const char*, 6> Flags{"+glow -halo", "-glow +halo", "+glow +halo",
                                           "-glow -halo", "+glow -halo", "-glow +halo"};
constexpr std::array<const char*, 6> Truths{"false", "true", "false", "true", "false", "true"};
constexpr Slider Sliders[] = {
    {"Blurred_exponent", "Display/Blurred", "exponent", true, Numbers},
    {"Blurred_taps", "Display/Blurred", "width", true, {"3", "4", "7", "11", "19", "20"}},
    {"CMYK_options", "Display/CMYK", "options", false, Flags},
    {"CurveAdjust_p",
     "Display/CurveAdjust",
     "p",
     true,
     {"0.1 0.5", "0.2 0.5", "0.3 0.5", "0.4 0.5", "0.5 0.6", "0.5 0.7"}},
    {"Depth_visibility", "Display/Depth@DisplayDepth", "InputVisibility", false, Truths},
    {"ToneMapping_offset", "Display/Depth@HDRObjectDisplay", "offset", true, Numbers},
    {"ToneMapping_transparency", "Display/Depth@HDRObjectDisplay", "TransparencyExponent", false, Numbers},
    {"HSVAdjust_hue", "Display/HSVAdjust", "hue", true, Numbers},
    {"PixelContours_width", "Display/PixelContours", "width", true, {"1", "2", "3", "4", "5", "6"}},
    {"PixelContours_strength", "Display/PixelContours", "strength", false, Numbers},
    {"ProximityHDR_width", "Display/ProximityHDR", "width", true, {"1", "2", "3", "4", "5", "6"}},
    {"ProximityHDR_gamma", "Display/ProximityHDR", "gamma", false, Numbers},
};

/// Keeps fewer programs than a slider has values.
class ProgramsOfDisplays : public Programs, public testing::WithParamInterface<Slider> {
protected:
    static constexpr std::size_t MostPrograms = 4;

    ProgramsOfDisplays() : Programs(SessionOptions{.cachedPrograms = MostPrograms}) {
        shown->setInput(object(fill));
    }

    void setValue(std::size_t i) {
        support::setParameter(*shown, GetParam().parameter, GetParam().values.at(i));
    }
    void draw() { static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8))); }

    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> shown =
        plugin.make<krod::MSDeferredObjectDisplay>(GetParam().key);
};

TEST_P(ProgramsOfDisplays, Steady_frames_compile_nothing) {
    setValue(0);
    for (int i = 0; i < 10; ++i) draw();
    EXPECT_EQ(counts().compiles, 1U);
    EXPECT_EQ(counts().misses, 1U);
    EXPECT_EQ(counts().hits, 9U);
}

TEST_P(ProgramsOfDisplays, Moving_slider_compiles_once_for_each_text_and_keeps_few_programs) {
    const std::size_t values = GetParam().values.size();
    for (std::size_t i = 0; i < values; ++i) {
        setValue(i);
        draw();
        draw();
        EXPECT_EQ(counts().compiles, GetParam().inText ? i + 1 : 1U) << GetParam().values.at(i);
    }
    EXPECT_EQ(counts().entries, GetParam().inText ? MostPrograms : 1U);
    EXPECT_EQ(counts().evictions, GetParam().inText ? values - MostPrograms : 0U);
    EXPECT_EQ(counts().failures, 0U);
}

INSTANTIATE_TEST_SUITE_P(AllDisplays, ProgramsOfDisplays, testing::ValuesIn(Sliders),
                         [](const auto& about) { return std::string(about.param.name); });

} // namespace
} // namespace workbench::test
