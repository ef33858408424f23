// SPDX-License-Identifier: Apache-2.0
// What becomes of a plug-in's objects when it is unloaded.
#include "Scene.h"
#include "Tool.h"

#include "workbench/core/ObjectRegistry.h"
#include "workbench/memory/LivingObjects.h"

#include "host/core/VValuePool.h"
#include "host/rendering/ImageTile.h"
#include "host/rendering/RGBAHalf.h"
#include "host/rendering/VRenderContext.h"

#include <gtest/gtest.h>

#include <exception>
#include <utility>

namespace {

using krod::StrongPtr;

class Unloading : public testing::Test {
protected:
    /// Expects that the library cannot go because of one object of that class, and still works.
    void expectHeld(const std::string& typeName) {
        const std::size_t objects = workbench::livingObjectCount();
        const std::size_t modules = workbench::ObjectRegistry::count();
        const auto message = scene::refusal([this] { manager.unload(library); });
        EXPECT_EQ(message.sentence(), TOVAR_PLIME ": cannot be unloaded — 1 object of it is still held (" +
                                          typeName + "). Let go of it first.");
        EXPECT_EQ(message.details, std::vector<std::string>{"1 of " + typeName});
        EXPECT_EQ(manager.find(library)->state, workbench::PluginStatus::State::Loaded);
        EXPECT_EQ(workbench::livingObjectCount(), objects);
        EXPECT_EQ(workbench::ObjectRegistry::count(), modules);
        EXPECT_TRUE(scene::processorOf(scene::make("Hollywood/PixelBlur")));
    }

    void expectUnloaded() {
        manager.unload(library);
        EXPECT_EQ(manager.find(library)->state, workbench::PluginStatus::State::Unloaded);
        EXPECT_FALSE(scene::isInMemory(TOVAR_PLIME));
    }

    const std::size_t before = workbench::livingObjectCount();
    workbench::PluginManager manager;
    workbench::LibraryId library = manager.load(TOVAR_PLIME);
};

std::string classOf(const scene::Processor& processor) {
    const krod::ImageTileProcessor& object = *processor;
    return krod::typenameOf(typeid(object));
}

} // namespace

TEST_F(Unloading, Deletes_three_held_objects_of_each_module) {
    std::vector<StrongPtr<krod::VObject>> objects;
    for (int copy = 0; copy < 3; ++copy)
        for (auto& object : scene::makeCatalogue()) objects.push_back(object);
    EXPECT_EQ(workbench::ObjectRegistry::count(), 45U);
    expectUnloaded();
    for (const auto& object : objects) EXPECT_FALSE(object);
    EXPECT_EQ(workbench::ObjectRegistry::count(), 0U);
    EXPECT_EQ(workbench::livingObjectCount(), before);
}

TEST_F(Unloading, Is_refused_while_a_processor_is_held) {
    for (const char* key : {"Hollywood/GammaCorrection", "Hollywood/TileProgram"}) {
        SCOPED_TRACE(key);
        const auto object = scene::make(key);
        auto processor = scene::processorOf(object);
        expectHeld(classOf(processor));
        EXPECT_EQ(scene::processorOf(object), processor);
        processor.reset();
    }
    expectUnloaded();
}

TEST_F(Unloading, Is_refused_while_a_processor_outlives_its_module) {
    auto processor = scene::processorOf(scene::make("Hollywood/ArcTangens"));
    expectHeld(classOf(processor));
    processor.reset();
    expectUnloaded();
}

TEST_F(Unloading, Is_refused_while_the_value_of_an_output_is_held) {
    const auto object = scene::make("Hollywood/HDRToneMapping");
    auto value = scene::valueOf(object);
    expectHeld("TypedValue<StrongPtr<ImageTileProcessor>>");
    EXPECT_TRUE(scene::processorOf(object));
    value.reset();
    expectUnloaded();
}

TEST_F(Unloading, Is_refused_while_a_copy_of_a_value_is_held) {
    const auto object = scene::make("Hollywood/HDRToneMapping");
    auto copy = scene::valueOf(object)->clone();
    expectHeld(classOf(scene::processorOf(object)));
    copy.reset();
    expectUnloaded();
}

TEST_F(Unloading, Is_refused_while_a_parameter_of_the_host_holds_a_processor) {
    const auto object = scene::make("Hollywood/PixelBlur");
    StrongPtr<krod::VParameter> consumer(
        new krod::VParameter(krod::makeValue(scene::processorOf(object)), "processor", {}));
    expectHeld(classOf(scene::processorOf(object)));
    consumer.reset();
    expectUnloaded();
}

TEST_F(Unloading, Counts_everything_that_is_held) {
    const auto first = scene::make("Hollywood/PixelBlur"), second = scene::make("Hollywood/ArcTangens");
    const auto blurValue = scene::valueOf(first), arcTangensValue = scene::valueOf(second);
    const auto blur = scene::processorOf(first);
    const auto message = scene::refusal([this] { manager.unload(library); });
    EXPECT_EQ(message.what, "cannot be unloaded — 3 objects of it are still held (TypedValue<StrongPtr<"
                            "ImageTileProcessor>>, " +
                                classOf(blur) + ')');
    EXPECT_EQ(message.advice, "Let go of them first");
    EXPECT_EQ(message.details, (std::vector<std::string>{"2 of TypedValue<StrongPtr<ImageTileProcessor>>",
                                                         "1 of " + classOf(blur)}));
}

TEST_F(Unloading, Empties_held_parameters) {
    const auto object = scene::make("Hollywood/PixelBlur");
    const auto output = scene::outputOf(object);
    const auto input = object->slots().inputs().front().parameter;
    const std::string text = input->value().text();
    expectUnloaded();
    EXPECT_FALSE(output->creator());
    EXPECT_EQ(output->typeName(), "StrongPtr<ImageTileProcessor>");
    const auto* value = dynamic_cast<const krod::TypedValue<scene::Processor>*>(&output->value());
    ASSERT_TRUE(value);
    EXPECT_FALSE(value->value());
    EXPECT_EQ(input->value().text(), text);
}

TEST_F(Unloading, Leaves_an_exception_whole_that_is_held) {
    std::exception_ptr held;
    {
        const krod::VValuePool pool;
        krod::ImageTile tile(1, 1,
                             StrongPtr<krod::Chunk<krod::RGBAHalf>>(new krod::Chunk<krod::RGBAHalf>(1)));
        try { // without a session to draw in
            scene::processorOf(scene::make("Hollywood/PixelBlur"))->process(krod::VRenderContext(pool), tile);
        } catch (...) {
            held = std::current_exception();
        }
    }
    ASSERT_TRUE(held);
    expectUnloaded();
    try {
        std::rethrow_exception(std::exchange(held, nullptr));
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(),
                     "image tile: needs OpenGL — expected an open session on this thread, got none. "
                     "Open a RenderSession first, or make it current here.");
    }
}

TEST_F(Unloading, Takes_as_many_calls_as_loading) {
    EXPECT_EQ(manager.load(TOVAR_PLIME), library);
    manager.unload(library);
    EXPECT_EQ(scene::creatorCount(library), 15U);
    expectUnloaded();
    EXPECT_EQ(scene::refusal([this] { manager.unload(library); }).sentence(),
              "plug-in number " + std::to_string(library) + ": is not loaded.");
}

TEST(Manager, That_ends_while_a_processor_is_held_leaves_its_code_in_memory) {
    // At the end of the process the library goes like any other: detached first.
    EXPECT_EQ(toolOutput("hold"), "VCreator::create()\n"
                                  "VCreator::create() got derived object\n"
                                  "plime::PixelBlur::TileShader::ImageTileProcessor held, library in memory\n"
                                  "VInitialization::initPlugin(1,tovar_plime,KROD_API_VERSION)\n");
}
