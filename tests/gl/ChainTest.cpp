// SPDX-License-Identifier: Apache-2.0
// Displays as inputs of displays.
#include "GlFixture.h"

#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <stdexcept>
#include <utility>

namespace workbench::test {
namespace {

class Chain : public GlTest {};

/// A display that adds to one channel of what it shows.
krod::StrongPtr<TestDisplay> adding(const std::string& channel, const std::string& amount) {
    return display([=](TestDisplay::Renderer& renderer) {
        shade(renderer, "#version 150\n"
                        "uniform sampler2DMS SceneColor;\n"
                        "void main() {\n"
                        "  vec4 c = texelFetch(SceneColor, ivec2(gl_FragCoord.xy), 0);\n"
                        "  c." +
                            channel + " += " + amount +
                            ";\n"
                            "  gl_FragColor = c;\n"
                            "}\n");
    });
}

TEST_F(Chain, Three_displays_work_on_each_other) {
    const auto first = adding("r", "0.25"), second = adding("g", "0.25"), third = adding("b", "0.125");
    first->setInput(object(fill));
    second->setInput(first);
    third->setInput(second);
    const auto pixels = renderPicture(session, *third, pool, frame(8, 8));
    EXPECT_EQ(static_cast<float>(pixels[20].r), 0.5F);
    EXPECT_EQ(static_cast<float>(pixels[20].g), 0.75F);
    EXPECT_EQ(static_cast<float>(pixels[20].b), 0.875F);
    EXPECT_TRUE(warnings.heard.empty());
}

TEST_F(Chain, Rows_keep_their_order) {
    const auto first = adding("r", "0.0"), second = adding("g", "0.0");
    first->setInput(object([](krod::VGLRenderContext&) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glColor4d(1, 0, 0, 1);
        glRectd(-1, 0, 1, 1); // the upper half
    }));
    second->setInput(first);
    const auto pixels = renderPicture(session, *second, pool, frame(8, 8));
    EXPECT_EQ(static_cast<float>(pixels[0].r), 1);
    EXPECT_EQ(static_cast<float>(pixels[63].r), 0);
}

/// A display that shows the depth of what it shows.
krod::StrongPtr<TestDisplay> showingDepth() {
    return display([](TestDisplay::Renderer& renderer) {
        shade(renderer, "#version 150\n"
                        "uniform sampler2DMS SceneDepth;\n"
                        "void main() {\n"
                        "  float depth = texelFetch(SceneDepth, ivec2(gl_FragCoord.xy), 0).r;\n"
                        "  gl_FragColor = vec4(depth, depth, depth, 1.0);\n"
                        "}\n");
    });
}

/// The left half at a depth of a quarter, nothing on the right.
void drawLeftHalf(krod::VGLRenderContext&) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
    glColor4d(0.25, 0.5, 0, 1);
    glBegin(GL_QUADS);
    for (const auto& [x, y] : {std::pair(-1, -1), {0, -1}, {0, 1}, {-1, 1}}) glVertex3d(x, y, -0.5);
    glEnd();
}

TEST_F(Chain, Depth_is_handed_on_through_displays_that_write_none) {
    const auto first = adding("r", "0.25"), second = adding("g", "0.25"), depth = showingDepth();
    first->setInput(object(drawLeftHalf));
    second->setInput(first);
    depth->setInput(second);
    const auto pixels = renderPicture(session, *depth, pool, frame(8, 8));
    EXPECT_EQ(static_cast<float>(pixels[8].r), 0.25F);
    EXPECT_EQ(static_cast<float>(pixels[15].r), 1.0F);
}

TEST_F(Chain, Depth_handed_on_leaves_colours_alone) {
    const auto first = adding("r", "0.25"), second = adding("g", "0.25");
    first->setInput(object(drawLeftHalf));
    second->setInput(first);
    const auto pixels = renderPicture(session, *second, pool, frame(8, 8));
    EXPECT_EQ(static_cast<float>(pixels[8].r), 0.5F);
    EXPECT_EQ(static_cast<float>(pixels[8].g), 0.75F);
    EXPECT_EQ(static_cast<float>(pixels[8].b), 0.0F);
}

TEST_F(Chain, Display_that_leaves_the_depth_test_on_draws_behind_another) {
    const auto first = adding("b", "0.5");
    const auto tested = display([](TestDisplay::Renderer& renderer) {
        glEnable(GL_DEPTH_TEST);
        shade(renderer, "#version 150\n"
                        "uniform sampler2DMS SceneColor;\n"
                        "uniform sampler2DMS SceneDepth;\n"
                        "void main() {\n"
                        "  ivec2 p = ivec2(gl_FragCoord.xy);\n"
                        "  gl_FragColor = vec4(texelFetch(SceneColor, p, 0).rgb, 1.0);\n"
                        "  gl_FragDepth = texelFetch(SceneDepth, p, 0).r;\n"
                        "}\n");
    });
    first->setInput(object(drawLeftHalf));
    tested->setInput(first);
    const auto pixels = renderPicture(session, *tested, pool, frame(8, 8));
    EXPECT_EQ(static_cast<float>(pixels[8].b), 0.5F);
    EXPECT_EQ(static_cast<float>(pixels[15].b), 0.0F); // nothing is there, the background stays
}

TEST_F(Chain, Display_is_not_accepted_as_its_own_input) {
    const auto first = adding("r", "0.0"), second = adding("g", "0.0"), third = adding("b", "0.0");
    EXPECT_THROW(first->setInput(first), std::invalid_argument);
    second->setInput(first);
    third->setInput(second);
    EXPECT_THROW(first->setInput(third), std::invalid_argument);
    EXPECT_FALSE(first->input());
}

TEST_F(Chain, As_long_as_the_driver_allows_works_and_longer_is_refused) {
    std::vector<krod::StrongPtr<TestDisplay>> chain{adding("r", "0.0")};
    chain.back()->setInput(object(fill));
    while (chain.size() < 15) {
        chain.push_back(adding("r", "0.0"));
        chain.back()->setInput(chain[chain.size() - 2]);
    }
    EXPECT_EQ(static_cast<float>(renderPicture(session, *chain.back(), pool, frame(4, 4))[0].g), 0.5F);
    chain.push_back(adding("r", "0.0"));
    chain.back()->setInput(chain[chain.size() - 2]);
    EXPECT_THROW(static_cast<void>(renderPicture(session, *chain.back(), pool, frame(4, 4))), Failure);
    EXPECT_EQ(static_cast<float>(renderPicture(session, *chain[2], pool, frame(4, 4))[0].g), 0.5F);
}

} // namespace
} // namespace workbench::test
