// SPDX-License-Identifier: Apache-2.0
// Scene/Model: colours and light.
#include "Stage.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace workbench::test;

namespace {

constexpr int Middle = Stage::Width / 2, Centre = Stage::Height / 2;

/// A square in the plane z = slope * x with vertices of one colour; the second winding looks away.
std::string square(double slope, bool away) {
    const std::string right = std::to_string(slope), left = std::to_string(-slope);
    return "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\n"
           "element face 2\nproperty list uchar int vertex_indices\nend_header\n"
           "-1 -1 " +
           left + " 255 128 0\n1 -1 " + right + " 255 128 0\n1 1 " + right + " 255 128 0\n-1 1 " + left +
           " 255 128 0\n" + (away ? "3 2 1 0\n3 3 2 0\n" : "3 0 1 2\n3 0 2 3\n");
}

Pixels picture(Stage& stage, double slope, bool away) {
    const Object object = Stage::make("Scene/Model");
    Stage::set(object, "file", stage.write("square.ply", square(slope, away)));
    return stage.render(*object);
}

} // namespace

TEST(Model, Facing_the_eye_it_has_its_full_colour) {
    Stage stage;
    const Pixels pixels = picture(stage, 0, false);
    const auto& pixel = at(pixels, Middle, Centre);
    EXPECT_NEAR(static_cast<float>(pixel.r), 1, 0.001);
    EXPECT_NEAR(static_cast<float>(pixel.g), 128.0 / 255, 0.001);
    EXPECT_EQ(static_cast<float>(pixel.b), 0);
    EXPECT_EQ(static_cast<float>(pixel.a), 1);
}

TEST(Model, Inclined_by_60_degrees_it_has_half_of_its_light) {
    Stage stage;
    const Pixels pixels = picture(stage, std::sqrt(3.0), false);
    EXPECT_NEAR(static_cast<float>(at(pixels, Middle, Centre).r), 0.5, 0.005);
}

TEST(Model, Both_sides_are_lit_alike) {
    Stage stage;
    const Pixels towards = picture(stage, 0.5, false), away = picture(stage, 0.5, true);
    EXPECT_GT(coverage(towards), 0.1);
    for (std::size_t i = 0; i < towards.size(); ++i) // other corners first: the last bits may differ
        ASSERT_NEAR(static_cast<float>(towards[i].r), static_cast<float>(away[i].r), 0.001) << "pixel " << i;
}

TEST(Model, Nearer_triangles_hide_farther_ones_in_either_order) {
    Stage stage;
    const std::string near = "v -1 -1 1\nv 1 -1 1\nv 0 1 1\n", far = "v -1 -1 -1\nv 1 -1 -1\nv 0 1 -1\n";
    const Object object = Stage::make("Scene/Model");
    Stage::set(object, "file", stage.write("one.obj", near + far + "f 1 2 3\nf 4 5 6\n"));
    const Pixels pixels = stage.render(*object);
    Stage::set(object, "file", stage.write("other.obj", near + far + "f 4 5 6\nf 1 2 3\n"));
    EXPECT_TRUE(same(pixels, stage.render(*object)));
    EXPECT_GT(coverage(pixels), 0.01);
}

TEST(Model, Bounds_lie_around_the_vertices) {
    Stage stage;
    const Object object = Stage::make("Scene/Model");
    Stage::set(object, "file", stage.write("far.obj", "v 10 0 5\nv 12 0 5\nv 10 2 5\nf 1 2 3\n"));
    const auto bounds = object->bounds();
    EXPECT_DOUBLE_EQ(bounds.x, 11);
    EXPECT_DOUBLE_EQ(bounds.y, 1);
    EXPECT_DOUBLE_EQ(bounds.z, 5);
    EXPECT_DOUBLE_EQ(bounds.radius, std::sqrt(2.0));
}
