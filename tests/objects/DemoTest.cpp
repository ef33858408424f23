// SPDX-License-Identifier: Apache-2.0
// The generated scenes.
#include "Stage.h"

#include <gtest/gtest.h>

#include <limits>

using namespace workbench::test;

namespace {

struct Demo {
    const char* key;
    double smallest, largest;  ///< radius of the bounds
    double thinnest, thickest; ///< share of the picture that is not black
};

class EveryDemo : public ::testing::TestWithParam<Demo> {
protected:
    Stage stage;
};

/// Whether no lit pixel lies on the rim, which a camera fitted to right bounds keeps free at the sides.
bool sidesAreFree(const Pixels& pixels) {
    for (int y = 0; y < Stage::Height; ++y)
        for (const int x : {0, Stage::Width - 1})
            if (static_cast<float>(at(pixels, x, y).g) > 0) return false;
    return true;
}

} // namespace

TEST_P(EveryDemo, Draws_a_picture_inside_of_its_bounds) {
    const Object object = Stage::make(GetParam().key);
    const auto bounds = object->bounds();
    EXPECT_GT(bounds.radius, GetParam().smallest);
    EXPECT_LT(bounds.radius, GetParam().largest);
    const Pixels pixels = stage.render(*object);
    EXPECT_GT(coverage(pixels), GetParam().thinnest);
    EXPECT_LT(coverage(pixels), GetParam().thickest);
    EXPECT_TRUE(sidesAreFree(pixels));
}

TEST_P(EveryDemo, Two_objects_give_the_same_picture_bit_for_bit) {
    const Object first = Stage::make(GetParam().key), second = Stage::make(GetParam().key);
    const Pixels pixels = stage.render(*first);
    EXPECT_TRUE(same(pixels, stage.render(*second)));
    EXPECT_TRUE(same(pixels, stage.render(*first)));
}

INSTANTIATE_TEST_SUITE_P(Scene, EveryDemo,
                         ::testing::Values(Demo{"Scene/Galaxy", 0.8, 1.2, 0.1, 0.6},
                                           Demo{"Scene/Knot", 1.5, 2, 0.15, 0.5},
                                           Demo{"Scene/Columns", 3, 6, 0.1, 0.5}),
                         [](const auto& param) { return std::string(param.param.key).substr(6); });

TEST(Galaxy, Core_is_far_brighter_than_1_and_arms_are_darker) {
    Stage stage;
    const Pixels pixels = stage.render(*Stage::make("Scene/Galaxy"));
    EXPECT_GT(static_cast<float>(at(pixels, Stage::Width / 2, Stage::Height / 2).r), 10.0F);
    EXPECT_GT(largest(pixels), 50.0F);
    int dim = 0;
    for (const auto& pixel : pixels)
        dim += pixel.g > half_float::half(0.0F) && pixel.g < half_float::half(1.0F);
    EXPECT_GT(dim, 2000);
}

TEST(Galaxy, Another_seed_gives_other_stars) {
    Stage stage;
    const Object object = Stage::make("Scene/Galaxy");
    const Pixels before = stage.render(*object);
    Stage::set(object, "seed", "2");
    EXPECT_FALSE(same(before, stage.render(*object)));
    Stage::set(object, "seed", "1");
    EXPECT_TRUE(same(before, stage.render(*object)));
}

TEST(Galaxy, Count_below_1_draws_nothing) {
    Stage stage;
    const Object object = Stage::make("Scene/Galaxy");
    Stage::set(object, "count", "0");
    EXPECT_LT(object->bounds().radius, 0);
    EXPECT_EQ(coverage(stage.render(*object)), 0);
}

TEST(Columns, Numbers_beyond_their_limits_count_as_the_limits) {
    Stage stage;
    const Object largest = Stage::make("Scene/Columns"), beyond = Stage::make("Scene/Columns");
    for (const char* name : {"rows", "columns"}) {
        Stage::set(largest, name, "64");
        Stage::set(beyond, name, std::to_string(std::numeric_limits<int>::max()));
    }
    EXPECT_EQ(largest->bounds().radius, beyond->bounds().radius);
}

TEST(Knot, A_tube_without_thickness_is_still_a_tube) {
    Stage stage;
    const Object object = Stage::make("Scene/Knot");
    Stage::set(object, "thickness", "-5.0");
    Stage::set(object, "p", "0");
    EXPECT_GT(coverage(stage.render(*object)), 0.001);
}
