// SPDX-License-Identifier: Apache-2.0
// What the plug-in's creators make.
#include "Scene.h"

#include "workbench/core/ActionListener.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/platform/ElfFile.h"

#include <gtest/gtest.h>

#include <set>
#include <typeindex>

namespace {

using Lines = std::vector<std::string>;

/// Remembers which objects were announced, and for which context.
class Announcements : public workbench::ActionListener {
public:
    Announcements() { workbench::setActionListener(this); }
    Announcements(const Announcements&) = delete;
    Announcements& operator=(const Announcements&) = delete;
    ~Announcements() override { workbench::setActionListener(nullptr); }

    void created(const krod::StrongPtr<krod::VObject>& object, krod::VCreationContext& context,
                 krod::VCreatorBase& creator) override {
        names.push_back(object->name());
        complete = object->processesRequests() && object->creator().get() == &creator;
        lastContext = &context;
    }

    Lines names;
    bool complete = false;
    krod::VCreationContext* lastContext = nullptr;
};

class Creation : public testing::Test {
protected:
    workbench::PluginManager manager;
    workbench::LibraryId library = manager.load(TOVAR_PLIME);
};

} // namespace

TEST_F(Creation, Tells_the_requested_name_before_and_after_the_object_is_made) {
    const scene::TraceRecord trace;
    EXPECT_EQ(scene::make("Display/CMYK", "print")->name(), "print");
    EXPECT_EQ(trace.lines,
              (Lines{"VCreator::create(print)\n", "VCreator::create(print) got derived object\n"}));
}

TEST_F(Creation, An_empty_request_is_traced_empty_and_takes_the_creators_name) {
    const scene::TraceRecord trace;
    EXPECT_EQ(scene::make("Display/CMYK")->name(), "CMYK");
    EXPECT_EQ(scene::make("Hollywood/GammaCorrection")->name(), "Hollywood/GammaCorrection");
    EXPECT_EQ(trace.lines, (Lines{"VCreator::create()\n", "VCreator::create() got derived object\n",
                                  "VCreator::create()\n", "VCreator::create() got derived object\n"}));
}

TEST_F(Creation, Complete_objects_are_announced_with_the_hosts_context) {
    Announcements announcements;
    krod::VCreationContext context;
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        announcements.complete = false;
        const auto object = entry.creator->create("made", context);
        EXPECT_TRUE(announcements.complete) << entry.creator->keyname();
        EXPECT_EQ(announcements.lastContext, &context);
    }
    EXPECT_EQ(announcements.names, Lines(15, "made"));
}

TEST_F(Creation, Fifteen_modules_are_of_fifteen_types) {
    const auto objects = scene::makeCatalogue();
    std::set<std::type_index> types;
    for (const auto& object : objects) {
        const krod::VObject& module = *object;
        types.insert(typeid(module));
    }
    EXPECT_EQ(types.size(), 15U);
}

TEST_F(Creation, Seven_tile_modules_give_seven_types_of_processors) {
    std::set<std::type_index> types;
    for (const auto& object : scene::makeCatalogue()) {
        if (!scene::outputOf(object)) continue;
        const auto processor = scene::processorOf(object);
        ASSERT_TRUE(processor) << object->name();
        const krod::ImageTileProcessor& own = *processor;
        types.insert(typeid(own));
    }
    EXPECT_EQ(types.size(), 7U);
}

TEST_F(Creation, Input_creators_lead_to_the_seven_tile_modules_in_the_order_of_registration) {
    Lines keys;
    for (const auto* input : workbench::InputCreatorRegistry::find(typeid(scene::Processor)))
        keys.push_back(input->creator().keyname());
    EXPECT_EQ(keys, (Lines{"Hollywood/TileProgram", "Hollywood/PixelBlur", "Hollywood/HDRToneMapping",
                           "Hollywood/HDRColoredToneMapping", "Hollywood/GammaCorrection",
                           "Hollywood/ColorGammaCorrection", "Hollywood/ArcTangens"}));
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 7U);
}

TEST(Export, The_entry_is_the_only_one) {
    const auto file = workbench::ElfFile::inspect(TOVAR_PLIME);
    ASSERT_TRUE(file.usable()) << file.refusal.sentence();
    EXPECT_EQ(file.exportedNames, Lines{"KROD_API_2022_Feb_15__tovar_plime"});
    EXPECT_TRUE(file.uniqueNames.empty());
}
