// SPDX-License-Identifier: Apache-2.0
// Programs are compiled once, kept within bounds, and counted.
#include "GlFixture.h"

#include "workbench/gl/ProgramCache.h"
#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

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

} // namespace
} // namespace workbench::test
