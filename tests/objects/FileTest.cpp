// SPDX-License-Identifier: Apache-2.0
// What the three modules that read files have in common.
#include "Stage.h"

#include "workbench/files/Picture.h"

#include <gtest/gtest.h>

using namespace workbench::test;

namespace {

class EveryFileModule : public ::testing::TestWithParam<const char*> {
protected:
    /// A file that the module can read; `look` 0 and 1 give different ones.
    std::string file(int look) const {
        const std::string key = GetParam(), size = look == 0 ? "1" : "3";
        const std::string name = "input" + std::to_string(look);
        if (key == "Scene/Model")
            return stage.write(name + ".obj", "v 0 0 0\nv " + size + " 0 0\nv 0 1 0\nf 1 2 3\n");
        if (key == "Scene/Points") return stage.write(name + ".xyz", "0 0 0\n" + size + " 1 0\n");
        workbench::Picture picture;
        picture.description.width = 4 * (look + 1);
        picture.description.height = 4;
        const half_float::half one(1.0F);
        picture.pixels.assign(16U * static_cast<unsigned>(look + 1), {one, one, one, one});
        const auto path = stage.folder / (name + ".exr");
        writePicture(path, picture);
        return path.string();
    }

    Stage stage;
};

} // namespace

TEST_P(EveryFileModule, A_missing_file_is_an_input_failure_that_names_it) {
    const Object object = Stage::make(GetParam());
    const std::string path = (stage.folder / "missing.obj").string();
    Stage::set(object, "file", path);
    EXPECT_EQ(inputFailure([&] { static_cast<void>(object->bounds()); }).sentence(),
              path + ": does not exist. Check the path.");
    const Object other = Stage::make(GetParam());
    Stage::set(other, "file", path);
    EXPECT_EQ(inputFailure([&] {
                  const workbench::FrameSetup setup{32, 32};
                  static_cast<void>(renderPicture(stage.session, *other, stage.pool, setup));
              }).who,
              path);
}

TEST_P(EveryFileModule, A_broken_file_is_an_input_failure_that_names_it) {
    const Object object = Stage::make(GetParam());
    const std::string path = stage.write("broken.png", "neither picture nor model nor points\n");
    Stage::set(object, "file", path);
    EXPECT_TRUE(inputFailure([&] { static_cast<void>(object->bounds()); }).who.starts_with(path));
}

TEST_P(EveryFileModule, Without_a_file_it_draws_nothing_and_says_why) {
    const Object object = Stage::make(GetParam());
    EXPECT_LT(object->bounds().radius, 0);
    EXPECT_EQ(coverage(stage.render(*object)), 0);
    EXPECT_EQ(stage.warnings.heard,
              std::vector<std::string>{
                  GetParam() + std::string(": draws nothing, because its parameter \"file\" is empty")});
}

TEST_P(EveryFileModule, Another_file_takes_effect_also_after_a_failure) {
    const Object object = Stage::make(GetParam());
    Stage::set(object, "file", file(0));
    const double radius = object->bounds().radius;
    const Pixels pixels = stage.render(*object);
    EXPECT_GT(coverage(pixels), 0);

    Stage::set(object, "file", file(1));
    EXPECT_GT(object->bounds().radius, radius * 1.2);
    EXPECT_FALSE(same(pixels, stage.render(*object)));

    Stage::set(object, "file", (stage.folder / "missing").string());
    EXPECT_EQ(inputFailure([&] { static_cast<void>(object->bounds()); }).what, "does not exist");
    Stage::set(object, "file", file(0));
    EXPECT_EQ(object->bounds().radius, radius);
    EXPECT_TRUE(same(pixels, stage.render(*object)));
}

TEST_P(EveryFileModule, A_file_is_read_once) {
    const Object object = Stage::make(GetParam());
    const std::string path = file(0);
    Stage::set(object, "file", path);
    const double radius = object->bounds().radius;
    std::filesystem::remove(path);
    EXPECT_EQ(object->bounds().radius, radius);
    EXPECT_GT(coverage(stage.render(*object)), 0);
}

INSTANTIATE_TEST_SUITE_P(Scene, EveryFileModule,
                         ::testing::Values("Scene/Model", "Scene/Points", "Scene/Picture"),
                         [](const auto& param) { return std::string(param.param).substr(6); });
