// SPDX-License-Identifier: Apache-2.0
// Scene/Points: sums of light.
#include "Stage.h"

#include <gtest/gtest.h>

#include <epoxy/gl.h>

#include <algorithm>
#include <utility>

using namespace workbench::test;

namespace {

constexpr char TwoAtOnePlace[] = "0 0 0 300 0.5 4 1\n0 0 0 500 0.25 2 0.5\n";

/// Draws another object and remembers the least depth of the frame.
class LeastDepth : public krod::VGLRenderObject {
public:
    explicit LeastDepth(Object object) : VGLRenderObject("least depth", 0, {}), object(std::move(object)) {}

    void draw(krod::VGLRenderContext& context) override {
        object->render(context);
        std::vector<float> depths(static_cast<std::size_t>(context.width() * context.height()));
        glReadPixels(0, 0, context.width(), context.height(), GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
        least = *std::min_element(depths.begin(), depths.end());
    }
    [[nodiscard]] krod::BoundingSphere bounds() const override { return object->bounds(); }

    float least = 0;

private:
    Object object;
};

/// Draws another object whose places are normalised device coordinates.
class Unprojected : public krod::VGLRenderObject {
public:
    explicit Unprojected(Object object) : VGLRenderObject("unprojected", 0, {}), object(std::move(object)) {}

    void draw(krod::VGLRenderContext& context) override {
        for (const GLenum matrix : {GL_PROJECTION, GL_MODELVIEW}) {
            glMatrixMode(matrix);
            glLoadIdentity();
        }
        object->render(context);
    }
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {0, 0, 0, 1}; }

private:
    Object object;
};

class Points : public ::testing::Test {
protected:
    /// The only lit pixel.
    krod::RGBAHalf lit() {
        const Pixels pixels = stage.render(*object);
        krod::RGBAHalf found{};
        int count = 0;
        for (const auto& pixel : pixels)
            if (static_cast<float>(pixel.b) > 0) found = pixel, ++count;
        EXPECT_EQ(count, 1);
        return found;
    }

    Stage stage;
    Object object = Stage::make("Scene/Points");
};

} // namespace

TEST_F(Points, Colours_add_up_beyond_1) {
    Stage::set(object, "file", stage.write("points.xyz", TwoAtOnePlace));
    const auto pixel = lit();
    EXPECT_EQ(static_cast<float>(pixel.r), 800);
    EXPECT_EQ(static_cast<float>(pixel.g), 0.75F);
    EXPECT_EQ(static_cast<float>(pixel.b), 6);
}

/// The point's left edge is half a step of a driver, 1/512 pixel, right of a sample of column 159, and its right edge
/// as much right of one of column 160. A step further right it lies where the half is rounded to.
TEST_F(Points, A_place_between_two_steps_of_a_driver_is_rounded_up) {
    stage.plugins.load(TOVAR_PLIME);
    const auto samplesLitBy = [&](const char* file, const char* point) {
        Stage::set(object, "file", stage.write(file, point));
        const Object display = Stage::make("Display/CMYK");
        krod::castStrong<krod::MSDeferredObjectDisplay>(display)->setInput(Object(new Unprojected(object)));
        return stage.render(*display);
    };
    const Pixels between = samplesLitBy("between.xyz", "7.9345703e-04 0.0066666667 0 1 1 1\n");
    const Pixels above = samplesLitBy("above.xyz", "8.0566406e-04 0.0066666667 0 1 1 1\n");
    EXPECT_GT(static_cast<float>(at(above, 160, Stage::Height - 1 - 90).a), 0);
    EXPECT_TRUE(same(between, above));
}

TEST_F(Points, Alpha_stays_at_the_largest_instead_of_adding_up) {
    Stage::set(object, "file", stage.write("points.xyz", TwoAtOnePlace));
    EXPECT_EQ(static_cast<float>(lit().a), 1);
}

TEST_F(Points, Intensity_multiplies_colours_only) {
    Stage::set(object, "file", stage.write("points.xyz", TwoAtOnePlace));
    Stage::set(object, "intensity", "0.5");
    const auto pixel = lit();
    EXPECT_EQ(static_cast<float>(pixel.r), 400);
    EXPECT_EQ(static_cast<float>(pixel.b), 3);
    EXPECT_EQ(static_cast<float>(pixel.a), 1);
}

TEST_F(Points, A_point_behind_another_adds_its_light_too) {
    Stage::set(object, "file", stage.write("points.xyz", "0 0 1 2 2 2\n0 0 -1 3 3 3\n"));
    EXPECT_EQ(static_cast<float>(lit().r), 5);
}

TEST_F(Points, Depth_is_that_of_the_nearest_in_any_order) {
    const auto leastDepth = [&](const char* file, const char* lines) {
        Stage::set(object, "file", stage.write(file, lines));
        const krod::StrongPtr<LeastDepth> probe(new LeastDepth(object));
        static_cast<void>(stage.render(*probe));
        return probe->least;
    };
    const float nearestFirst = leastDepth("a.xyz", "0 0 1 2 2 2\n0 0 -1 3 3 3\n");
    EXPECT_EQ(nearestFirst, leastDepth("b.xyz", "0 0 -1 3 3 3\n0 0 1 2 2 2\n"));
    EXPECT_GT(nearestFirst, 0);
    EXPECT_LT(nearestFirst, 1);
}

TEST_F(Points, Size_is_the_width_in_pixels) {
    Stage::set(object, "file", stage.write("points.xyz", "0 0 0 1 1 1\n"));
    Stage::set(object, "size", "6.0");
    const double pixels = coverage(stage.render(*object)) * Stage::Width * Stage::Height;
    EXPECT_GE(pixels, 24); // a disc or a square, as the driver has it
    EXPECT_LE(pixels, 36);
}

TEST_F(Points, Size_below_1_counts_as_1) {
    Stage::set(object, "file", stage.write("points.xyz", "0 0 0 1 1 1\n"));
    Stage::set(object, "size", "-2.0");
    EXPECT_EQ(static_cast<float>(lit().r), 1);
}
