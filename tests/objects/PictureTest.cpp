// SPDX-License-Identifier: Apache-2.0
// Scene/Picture: where the picture stands and what becomes of its values.
#include "Stage.h"

#include "workbench/files/Picture.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace workbench::test;

namespace {

krod::RGBAHalf pixel(float r, float g, float b, float a) {
    using half_float::half;
    return {half(r), half(g), half(b), half(a)};
}

/// A picture file whose pixel in column x and row y is `color(x, y)`, shown by a new object.
template <class Color>
Object shown(const Stage& stage, int width, int height, const Color& color) {
    workbench::Picture picture;
    picture.description.width = width;
    picture.description.height = height;
    picture.description.hasAlpha = picture.description.alphaIsAssociated = true;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) picture.pixels.push_back(color(x, y));
    writePicture(stage.folder / "picture.exr", picture);
    const Object object = Stage::make("Scene/Picture");
    Stage::set(object, "file", (stage.folder / "picture.exr").string());
    return object;
}

constexpr int Middle = Stage::Width / 2, Centre = Stage::Height / 2;

} // namespace

TEST(Picture, Values_and_alpha_arrive_as_they_are_stored) {
    Stage stage;
    const Object object = shown(stage, 16, 16, [](int, int) { return pixel(700, -0.5F, 0.25F, 0.5F); });
    const Pixels pixels = stage.render(*object);
    const auto& centre = at(pixels, Middle, Centre);
    EXPECT_EQ(static_cast<float>(centre.r), 700);
    EXPECT_EQ(static_cast<float>(centre.g), -0.5F);
    EXPECT_EQ(static_cast<float>(centre.b), 0.25F);
    EXPECT_EQ(static_cast<float>(centre.a), 0.5F);
}

TEST(Picture, Top_row_is_above_and_first_column_left) {
    Stage stage;
    const Object object =
        shown(stage, 32, 32, [](int x, int y) { return pixel(y < 16 ? 1 : 0, x < 16 ? 1 : 0, 0.5F, 1); });
    const Pixels pixels = stage.render(*object);
    EXPECT_EQ(static_cast<float>(at(pixels, Middle, Centre - 20).r), 1);
    EXPECT_EQ(static_cast<float>(at(pixels, Middle, Centre + 20).r), 0);
    EXPECT_EQ(static_cast<float>(at(pixels, Middle - 20, Centre).g), 1);
    EXPECT_EQ(static_cast<float>(at(pixels, Middle + 20, Centre).g), 0);
}

TEST(Picture, Height_is_2_and_width_by_aspect) {
    const Stage stage;
    const Object object = shown(stage, 30, 10, [](int, int) { return pixel(1, 1, 1, 1); });
    const auto bounds = object->bounds();
    EXPECT_EQ(bounds.x, 0);
    EXPECT_EQ(bounds.y, 0);
    EXPECT_EQ(bounds.z, 0);
    EXPECT_DOUBLE_EQ(bounds.radius, std::sqrt(10.0));
}

TEST(Picture, A_picture_larger_than_a_texture_is_drawn_in_pieces_without_gaps) {
    Stage stage;
    const Object object =
        shown(stage, 9000, 900, [](int x, int) { return pixel(x < 4500 ? 2 : 3, 1, 1, 1); });
    const Pixels pixels = stage.render(*object);
    int left = 0, right = 0;
    for (int x = 0; x < Stage::Width; ++x) {
        const auto red = static_cast<float>(at(pixels, x, Centre).r);
        left += red == 2;
        right += red == 3;
    }
    EXPECT_GT(left, 60);
    EXPECT_NEAR(left, right, 3);
    for (int x = Middle - left + 2; x < Middle + right - 2; ++x)
        EXPECT_GE(static_cast<float>(at(pixels, x, Centre).r), 2) << "column " << x;
}
