// SPDX-License-Identifier: Apache-2.0
// The two plug-ins of this repository in one process: modules that draw, and a scene for them to show.
#include "Scene.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/memory/LivingObjects.h"

#include "host/core/VValuePool.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/gl/VGLRenderContext.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using krod::StrongPtr;
using workbench::PluginStatus;
using Display = krod::MSDeferredObjectDisplay;

/// One of the two, and a module of it.
struct Plugin {
    const char* path;
    std::string_view key;
    std::size_t creators;
    std::size_t inputCreators;
};

constexpr Plugin Modules{TOVAR_PLIME, "Display/Blurred", 15, 7};
constexpr Plugin Objects{WORKBENCH_OBJECTS, "Scene/Knot", 6, 0};

StrongPtr<krod::VGLRenderObject> make(const Plugin& plugin) {
    return krod::castStrong<krod::VGLRenderObject>(scene::make(plugin.key));
}

/// The renderer of one frame, which is of the display's plug-in.
StrongPtr<Display::MultiSampleDeferredRenderer> rendererOf(const StrongPtr<krod::VGLRenderObject>& display) {
    const krod::VValuePool pool;
    krod::VGLRenderContext context(pool, 16, 16);
    return krod::castStrong<Display>(display)->createRenderer(context);
}

/// Runs code of the plug-in: a display makes a renderer, a scene its mesh.
void expectWorks(const StrongPtr<krod::VGLRenderObject>& object) {
    ASSERT_TRUE(object);
    if (krod::castStrong<Display>(object))
        EXPECT_TRUE(rendererOf(object));
    else
        EXPECT_GT(object->bounds().radius, 1);
}

/// Whether the modules are loaded first, and whether they are unloaded first.
class BothPlugins : public testing::TestWithParam<std::tuple<bool, bool>> {
protected:
    BothPlugins() {
        const bool modulesFirst = std::get<0>(GetParam());
        if (modulesFirst) modules = manager.load(Modules.path);
        objects = manager.load(Objects.path);
        if (!modulesFirst) modules = manager.load(Modules.path);
    }

    [[nodiscard]] workbench::LibraryId libraryOf(const Plugin& plugin) const {
        return &plugin == &Modules ? modules : objects;
    }

    void expectThere(const Plugin& plugin) const {
        EXPECT_EQ(manager.find(libraryOf(plugin))->state, PluginStatus::State::Loaded);
        EXPECT_EQ(manager.find(libraryOf(plugin))->creators, plugin.creators);
        EXPECT_EQ(scene::creatorCount(libraryOf(plugin)), plugin.creators);
        EXPECT_EQ(workbench::CreatorRegistry::find(plugin.key).size(), 1U);
        EXPECT_TRUE(scene::isInMemory(plugin.path));
    }

    void expectGone(const Plugin& plugin) const {
        EXPECT_EQ(manager.find(libraryOf(plugin))->state, PluginStatus::State::Unloaded);
        EXPECT_EQ(scene::creatorCount(libraryOf(plugin)), 0U);
        EXPECT_TRUE(workbench::CreatorRegistry::find(plugin.key).empty());
        EXPECT_FALSE(scene::isInMemory(plugin.path));
    }

    const std::size_t before = workbench::livingObjectCount();
    workbench::PluginManager manager;
    workbench::LibraryId modules = 0, objects = 0;
};

std::string nameOf(const testing::TestParamInfo<std::tuple<bool, bool>>& order) {
    const auto [loadedFirst, unloadedFirst] = order.param;
    return std::string(loadedFirst ? "Modules" : "Objects") + "_loaded_first_and_" +
           (unloadedFirst ? "modules" : "objects") + "_unloaded_first";
}

} // namespace

TEST_P(BothPlugins, Go_one_after_the_other_and_the_second_works_until_then) {
    const bool modulesGoFirst = std::get<1>(GetParam());
    const Plugin& first = modulesGoFirst ? Modules : Objects;
    const Plugin& second = modulesGoFirst ? Objects : Modules;
    expectThere(first);
    expectThere(second);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), first.inputCreators + second.inputCreators);
    const auto lost = make(first), kept = make(second);
    expectWorks(lost);
    expectWorks(kept);

    manager.unload(libraryOf(first));
    EXPECT_FALSE(lost);
    expectGone(first);
    expectThere(second);
    EXPECT_EQ(workbench::CreatorRegistry::entries().size(), second.creators);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), second.inputCreators);
    expectWorks(kept);
    expectWorks(make(second));

    manager.unload(libraryOf(second));
    EXPECT_FALSE(kept);
    expectGone(second);
    EXPECT_TRUE(workbench::CreatorRegistry::entries().empty());
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 0U);
    EXPECT_EQ(workbench::livingObjectCount(), before);
}

TEST_P(BothPlugins, Stay_while_a_display_that_shows_an_object_of_the_other_draws) {
    const auto display = make(Modules), knot = make(Objects);
    krod::castStrong<Display>(display)->setInput(knot);
    auto renderer = rendererOf(display);
    ASSERT_TRUE(renderer);
    const Display::MultiSampleDeferredRenderer& held = *renderer;
    const auto refuses = [&] {
        EXPECT_EQ(scene::refusal([this] { manager.unload(modules); }).what,
                  "cannot be unloaded — 1 object of it is still held (" + krod::typenameOf(typeid(held)) +
                      ')');
        expectThere(Modules);
        expectWorks(display);
    };
    refuses();
    expectThere(Objects);
    EXPECT_EQ(krod::castStrong<Display>(display)->input(), knot);
    EXPECT_EQ(display->bounds().radius, knot->bounds().radius);

    const bool modulesGoFirst = std::get<1>(GetParam());
    if (!modulesGoFirst) {
        manager.unload(objects);
        EXPECT_FALSE(krod::castStrong<Display>(display)->input());
        expectGone(Objects);
        refuses();
    }
    renderer.reset();
    manager.unload(modules);
    EXPECT_FALSE(display);
    expectGone(Modules);
    if (modulesGoFirst) {
        expectWorks(knot);
        manager.unload(objects);
        expectGone(Objects);
    }
    EXPECT_FALSE(knot);
    EXPECT_EQ(workbench::livingObjectCount(), before);
}

INSTANTIATE_TEST_SUITE_P(InEveryOrder, BothPlugins, testing::Combine(testing::Bool(), testing::Bool()),
                         nameOf);
