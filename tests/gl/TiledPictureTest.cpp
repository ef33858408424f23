// SPDX-License-Identifier: Apache-2.0
// Pictures in tiles against the same pictures in one piece.
#include "GlFixture.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace workbench::test {
namespace {

/// Halves in steps: neighbouring numbers differ by one.
int steps(half_float::half value) {
    const auto bits = std::bit_cast<std::uint16_t>(value);
    return bits & 0x8000U ? -(bits & 0x7FFF) : bits;
}

int difference(const krod::RGBAHalf& a, const krod::RGBAHalf& b) {
    return std::max({std::abs(steps(a.r) - steps(b.r)), std::abs(steps(a.g) - steps(b.g)),
                     std::abs(steps(a.b) - steps(b.b)), std::abs(steps(a.a) - steps(b.a))});
}

/// Shaded balls of strips that cover most of the picture.
void balls(krod::VGLRenderContext&) {
    glEnable(GL_DEPTH_TEST);
    constexpr int Rings = 24, Parts = 48;
    const auto vertex = [](int ring, int part, double x) {
        const double polar = M_PI * ring / Rings, around = 2 * M_PI * part / Parts;
        const double nx = std::sin(polar) * std::cos(around), ny = std::cos(polar);
        const double nz = std::sin(polar) * std::sin(around);
        glColor4d(0.5 + 0.4 * nx, 0.5 + 0.4 * ny, 0.5 + 0.4 * nz, 1);
        glVertex3d(x + 0.6 * nx, 0.6 * ny, 0.6 * nz);
    };
    for (const double x : {-0.4, 0.4})
        for (int ring = 0; ring < Rings; ++ring) {
            glBegin(GL_QUAD_STRIP);
            for (int part = 0; part <= Parts; ++part) {
                vertex(ring, part, x);
                vertex(ring + 1, part, x);
            }
            glEnd();
        }
}

/// Averages a neighbourhood of 11 by 11 pixels, as blurring displays do.
constexpr char Blur[] = "#version 150\n"
                        "uniform sampler2DMS SceneColor;\n"
                        "void main() {\n"
                        "  ivec2 P = ivec2(gl_FragCoord.xy);\n"
                        "  ivec2 most = textureSize(SceneColor) - 1;\n"
                        "  vec4 sum = vec4(0.0);\n"
                        "  for (int y = -5; y <= 5; y++)\n"
                        "    for (int x = -5; x <= 5; x++)\n"
                        "      sum += texelFetch(SceneColor, clamp(P + ivec2(x, y), ivec2(0), most), 0);\n"
                        "  gl_FragColor = sum / 121.0;\n"
                        "}\n";

class TiledPictures : public GlTest {
protected:
    /// Compares the picture in tiles with the picture in one piece.
    void expectSame(krod::RenderAble& shown, int width, int height, const TileWish& wish) {
        FrameSetup setup = frame(width, height);
        setup.camera = Camera::fitted({0, 0, 0, 1}, static_cast<double>(width) / height);
        const auto whole = renderPicture(session, shown, pool, setup);
        setup.tiles = wish;
        ASSERT_GT(planTiles(width, height, wish).size(), 1U);
        const auto tiled = renderPicture(session, shown, pool, setup);
        ASSERT_EQ(tiled.size(), whole.size());
        std::size_t far = 0;
        int most = 0;
        for (std::size_t i = 0; i < whole.size(); ++i) {
            const int apart = difference(whole[i], tiled[i]);
            most = std::max(most, apart);
            far += apart > 8 ? 1 : 0;
        }
        RecordProperty("worst_half_steps", most);
        EXPECT_LE(far * 1000, whole.size())
            << far << " of " << whole.size() << " pixels, worst " << most << " steps";
    }
};

TEST_F(TiledPictures, Object_agrees) { expectSame(*object(balls), 300, 200, {64, 8}); }

TEST_F(TiledPictures, Display_that_looks_at_neighbours_agrees) {
    const auto shown = display([](TestDisplay::Renderer& renderer) { shade(renderer, Blur); });
    shown->setInput(object(balls));
    expectSame(*shown, 160, 120, {64, 8});
}

TEST_F(TiledPictures, Sides_that_do_not_divide_agree) { expectSame(*object(balls), 257, 131, {50, 3}); }

TEST_F(TiledPictures, Overlap_is_what_makes_neighbours_agree) {
    const auto shown = display([](TestDisplay::Renderer& renderer) { shade(renderer, Blur); });
    shown->setInput(object(balls));
    FrameSetup setup = frame(128, 96);
    setup.camera = Camera::fitted({0, 0, 0, 1}, 128.0 / 96);
    const auto whole = renderPicture(session, *shown, pool, setup);
    setup.tiles = {32, 0};
    const auto tiled = renderPicture(session, *shown, pool, setup);
    const auto far = std::count_if(whole.begin(), whole.end(), [&](const krod::RGBAHalf& pixel) {
        return difference(pixel, tiled[static_cast<std::size_t>(&pixel - whole.data())]) > 8;
    });
    EXPECT_GT(far, 100) << "the comparison would not notice a missing overlap";
}

TEST_F(TiledPictures, No_tile_is_drawn_larger_than_wished) {
    int widest = 0;
    const auto shape = object([&](krod::VGLRenderContext& context) {
        widest = std::max({widest, context.width(), context.height()});
    });
    FrameSetup setup = frame(500, 300);
    setup.tiles = {128, 16};
    static_cast<void>(renderPicture(session, *shape, pool, setup));
    EXPECT_GT(widest, 64);
    EXPECT_LE(widest, 128);
}

TEST_F(TiledPictures, Side_beyond_2048_is_cut_by_itself) {
    int frames = 0;
    const auto shape = object([&](krod::VGLRenderContext&) { ++frames; });
    static_cast<void>(renderPicture(session, *shape, pool, frame(2048, 4)));
    EXPECT_EQ(frames, 1);
    static_cast<void>(renderPicture(session, *shape, pool, frame(2049, 4)));
    EXPECT_EQ(frames, 3);
}

} // namespace
} // namespace workbench::test
