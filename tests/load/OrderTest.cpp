// SPDX-License-Identifier: Apache-2.0
// The order in which the plug-in registers and withdraws.
#include "Scene.h"
#include "Tool.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/memory/LivingObjects.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

const Lines Registration = {
    "VCreator::VCreator(Hollywood/TileProgram,2000)\n",
    "VCreator::VCreator(Display/ProximityHDR,0)\n",
    "VCreator::VCreator(Display/PixelContours,0)\n",
    "VCreator::VCreator(Hollywood/PixelBlur,-1000)\n",
    "VCreator::VCreator(Display/HSVAdjust,0)\n",
    "VCreator::VCreator(Hollywood/HDRToneMapping,0)\n",
    "VCreator::VCreator(Display/Depth,0)\n",
    "VCreator::VCreator(Hollywood/HDRColoredToneMapping,-1000)\n",
    "VCreator::VCreator(Hollywood/GammaCorrection,-1000)\n",
    "VCreator::VCreator(Hollywood/ColorGammaCorrection,-1000)\n",
    "VCreator::VCreator(Display/Depth,0)\n",
    "VCreator::VCreator(Display/CurveAdjust,0)\n",
    "VCreator::VCreator(Display/CMYK,0)\n",
    "VCreator::VCreator(Display/Blurred,0)\n",
    "VCreator::VCreator(Hollywood/ArcTangens,-1000)\n",
};
const std::string Attach = "VInitialization::initPlugin(0,tovar_plime,KROD_API_VERSION)\n";
const std::string Detach = "VInitialization::initPlugin(1,tovar_plime,KROD_API_VERSION)\n";

Lines loadingTrace() {
    Lines lines = Registration;
    lines.push_back(Attach);
    return lines;
}

std::string withdrawalTrace() {
    std::string text = Detach;
    std::size_t creators = 15, inputCreators = 7;
    for (const std::string_view key : scene::Catalogue) {
        if (key.starts_with("Hollywood/")) --inputCreators; // withdrawn before the objects are deleted
        text += std::string(key) + " deleted, " + std::to_string(creators--) + " creators and " +
                std::to_string(inputCreators) + " input creators left\n";
    }
    return text;
}

class FixedVerdict : public krod::VInitialization {
public:
    explicit FixedVerdict(int verdict) : VInitialization("2022_Feb_15"), verdict(verdict) {}
    int IsCompatible(const char*) override { return verdict; }

private:
    int verdict;
};

} // namespace

TEST(Order, Loading_registers_from_the_last_row_to_the_first_and_attaches_after_all) {
    workbench::PluginManager manager;
    const scene::TraceRecord trace;
    const auto library = manager.load(TOVAR_PLIME);
    EXPECT_EQ(trace.lines, loadingTrace());

    Lines sources;
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        EXPECT_EQ(entry.library, library);
        if (entry.creator->keyname() == "Display/Depth")
            sources.push_back(entry.creator->properties().source.value_or("none"));
    }
    EXPECT_EQ(sources, (Lines{"HDRObjectDisplay", "DisplayDepth"}));
}

TEST(Order, Unloading_detaches_first_and_withdraws_from_the_first_row_to_the_last) {
    EXPECT_EQ(toolOutput("unload"), withdrawalTrace());
}

TEST(Order, Exit_with_the_plugin_loaded_withdraws_in_the_order_of_unloading) {
    EXPECT_EQ(toolOutput("exit"), withdrawalTrace());
}

TEST(Order, Exit_in_a_callback_of_the_plugin_withdraws_in_the_order_of_unloading) {
    EXPECT_EQ(toolOutput("callback"), withdrawalTrace());
}

TEST(Order, A_refused_verdict_leaves_everything_as_before) {
    const std::size_t creators = workbench::CreatorRegistry::entries().size();
    const std::size_t inputCreators = workbench::InputCreatorRegistry::count();
    const std::size_t objects = workbench::livingObjectCount();
    Lines expected = loadingTrace();
    expected.push_back(Detach);
    for (const int verdict : {-1, 0, INT_MIN}) {
        workbench::PluginManager manager;
        manager.setHandshake(
            [verdict](const std::string&) { return std::make_unique<FixedVerdict>(verdict); });
        const scene::TraceRecord trace;
        const auto message = scene::refusal([&] { manager.load(TOVAR_PLIME); });
        EXPECT_EQ(message.sentence(),
                  TOVAR_PLIME ": has an entry that answers " + std::to_string(verdict) +
                      ", but this host expects a number above 0. Build the plug-in again with the headers of "
                      "this host.");
        EXPECT_TRUE(message.details.empty());
        EXPECT_EQ(trace.lines, expected);
        EXPECT_EQ(workbench::CreatorRegistry::entries().size(), creators);
        EXPECT_EQ(workbench::InputCreatorRegistry::count(), inputCreators);
        EXPECT_EQ(workbench::livingObjectCount(), objects);
        EXPECT_FALSE(scene::isInMemory(TOVAR_PLIME));
        ASSERT_EQ(manager.status().size(), 1U);
        EXPECT_EQ(manager.status()[0].state, workbench::PluginStatus::State::Refused);
        EXPECT_EQ(manager.status()[0].name, "tovar_plime");
    }
}

TEST(Order, A_hundred_refusals_in_a_row_leave_everything_as_before) {
    const std::size_t objects = workbench::livingObjectCount();
    workbench::PluginManager manager;
    manager.setHandshake([](const std::string&) { return std::make_unique<FixedVerdict>(0); });
    for (int i = 0; i < 100; ++i) {
        EXPECT_THROW(manager.load(TOVAR_PLIME), workbench::Failure);
        ASSERT_TRUE(workbench::CreatorRegistry::entries().empty());
        ASSERT_EQ(workbench::InputCreatorRegistry::count(), 0U);
        ASSERT_EQ(workbench::livingObjectCount(), objects);
        ASSERT_FALSE(scene::isInMemory(TOVAR_PLIME));
    }
    EXPECT_EQ(manager.status().size(), 1U);
    manager.setHandshake({});
    EXPECT_EQ(scene::creatorCount(manager.load(TOVAR_PLIME)), 15U);
}

TEST(Order, Every_verdict_above_zero_is_accepted) {
    for (const int verdict : {1, 2, INT_MAX}) {
        workbench::PluginManager manager;
        manager.setHandshake(
            [verdict](const std::string&) { return std::make_unique<FixedVerdict>(verdict); });
        EXPECT_EQ(scene::creatorCount(manager.load(TOVAR_PLIME)), 15U);
    }
}
