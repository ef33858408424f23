// SPDX-License-Identifier: Apache-2.0
// Two plug-ins at once, which register creators, input creators and the same value types.
#include "Scene.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"

#include "host/core/TypedSlotCreator.h"

#include <gtest/gtest.h>

namespace {

/// Both libraries, loaded in this order; each test unloads one and uses the other.
class TwoPlugins : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(workbench::CreatorRegistry::entries().size(), 17U);
        ASSERT_EQ(workbench::InputCreatorRegistry::count(), 8U);
    }

    /// Makes objects, whose slots ask for their types, and expects that nothing is said about them.
    static void expectWorks(std::string_view key) {
        scene::OutputRecord output;
        const std::int64_t counted = krod::TypedSlotCreator::InternalTypeCreatorAccessory;
        {
            const auto object = scene::make(key);
            EXPECT_TRUE(scene::processorOf(object));
        }
        EXPECT_GT(krod::TypedSlotCreator::InternalTypeCreatorAccessory, counted);
        EXPECT_EQ(output.text(), "");
        for (const std::type_info* type : {&typeid(int), &typeid(double)}) {
            const auto* creator = krod::TypedSlotCreator::find(*type);
            ASSERT_TRUE(creator);
            EXPECT_EQ(creator->create("free")->typeName(), krod::typenameOf(*type));
        }
        for (const std::string& name : {krod::Typename<int>(), krod::Typename<double>()}) {
            const auto* creator = krod::VValueCreator::find(name);
            ASSERT_TRUE(creator);
            EXPECT_EQ(creator->create()->typeName(), name);
        }
    }

    workbench::PluginManager manager;
    workbench::LibraryId real = manager.load(TOVAR_PLIME);
    workbench::LibraryId sample = manager.load(LOAD_SAMPLE);
};

} // namespace

TEST_F(TwoPlugins, Have_registries_of_their_own) {
    EXPECT_NE(real, sample);
    EXPECT_EQ(scene::creatorCount(real), 15U);
    EXPECT_EQ(scene::creatorCount(sample), 2U);
    EXPECT_EQ(manager.find(real)->creators, 15U);
    EXPECT_EQ(manager.find(sample)->creators, 2U);
    EXPECT_EQ(manager.find(sample)->name, "load_sample");
}

TEST_F(TwoPlugins, The_second_works_without_the_first) {
    const auto kept = scene::make("Sample/PassThrough"), lost = scene::make("Hollywood/PixelBlur");
    manager.unload(real);
    EXPECT_FALSE(lost);
    EXPECT_TRUE(scene::processorOf(kept));
    EXPECT_EQ(scene::creatorCount(real), 0U);
    EXPECT_EQ(scene::creatorCount(sample), 2U);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 1U);
    expectWorks("Sample/PassThrough");
}

TEST_F(TwoPlugins, The_first_works_without_the_second) {
    const auto kept = scene::make("Hollywood/PixelBlur"), lost = scene::make("Sample/PassThrough");
    manager.unload(sample);
    EXPECT_FALSE(lost);
    EXPECT_TRUE(scene::processorOf(kept));
    EXPECT_EQ(scene::creatorCount(real), 15U);
    EXPECT_EQ(scene::creatorCount(sample), 0U);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 7U);
    expectWorks("Hollywood/PixelBlur");
}

TEST_F(TwoPlugins, What_is_held_of_one_does_not_keep_the_other) {
    const auto processor = scene::processorOf(scene::make("Sample/PassThrough"));
    manager.unload(real);
    EXPECT_EQ(scene::refusal([this] { manager.unload(sample); }).what,
              "cannot be unloaded — 1 object of it is still held (PassThrough::Processor)");
}
