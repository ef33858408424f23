// SPDX-License-Identifier: Apache-2.0
// The plug-in as a whole: what it offers, and that it goes away.
#include "Stage.h"

#include "workbench/core/CreatorRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>

using namespace workbench::test;

namespace {

bool isMapped(const std::string& path) {
    std::ifstream mappings("/proc/self/maps");
    for (std::string line; std::getline(mappings, line);)
        if (line.find(path) != std::string::npos) return true;
    return false;
}

} // namespace

TEST(Plugin, Offers_three_file_modules_and_three_demos_with_all_texts) {
    const Stage stage;
    std::set<std::string> files, demos;
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        const auto& texts = entry.creator->properties();
        EXPECT_EQ(texts.category, "Scene");
        EXPECT_TRUE(texts.source && !texts.source->empty());
        EXPECT_TRUE(texts.help && texts.help->starts_with("<p>"));
        ASSERT_TRUE(texts.description);
        EXPECT_EQ(texts.description->find('\n'), std::string::npos);
        EXPECT_LE(texts.description->size(), 60U);
        (texts.group == "Demo" ? demos : files).insert(entry.creator->keyname());
    }
    EXPECT_EQ(files, (std::set<std::string>{"Scene/Model", "Scene/Picture", "Scene/Points"}));
    EXPECT_EQ(demos, (std::set<std::string>{"Scene/Columns", "Scene/Galaxy", "Scene/Knot"}));
}

TEST(Plugin, Help_names_every_parameter) {
    const Stage stage;
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        const Object object = Stage::make(entry.creator->keyname());
        for (const auto& input : object->slots().inputs())
            EXPECT_NE(entry.creator->properties().help->find("<b>" + input.name + "</b>"), std::string::npos)
                << entry.creator->keyname() << ' ' << input.name;
    }
}

TEST(Plugin, Leaves_memory_after_every_module_has_drawn) {
    Stage stage;
    std::vector<Object> objects;
    for (const auto& entry : workbench::CreatorRegistry::entries())
        objects.push_back(Stage::make(entry.creator->keyname()));
    ASSERT_EQ(objects.size(), 6U);
    for (const auto& object : objects) static_cast<void>(stage.render(*object));
    EXPECT_TRUE(isMapped(WORKBENCH_OBJECTS));

    stage.plugins.unload(stage.library);
    EXPECT_FALSE(isMapped(WORKBENCH_OBJECTS));
    EXPECT_TRUE(
        std::none_of(objects.begin(), objects.end(), [](const Object& object) { return bool(object); }));
    const auto* status = stage.plugins.find(stage.library);
    EXPECT_EQ(status->state, workbench::PluginStatus::State::Unloaded);
    EXPECT_FALSE(status->reason);
    EXPECT_TRUE(workbench::CreatorRegistry::entries().empty());
}

TEST(Plugin, Loads_again_and_draws_the_same) {
    Stage stage;
    const Pixels before = stage.render(*Stage::make("Scene/Knot"));
    for (int round = 0; round < 3; ++round) {
        stage.plugins.unload(stage.library);
        stage.library = stage.plugins.load(WORKBENCH_OBJECTS);
        EXPECT_TRUE(same(before, stage.render(*Stage::make("Scene/Knot"))));
    }
}
