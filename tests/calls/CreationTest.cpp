// SPDX-License-Identifier: Apache-2.0
// The required calls while a creator makes an object, and while the object declares its parameters.
#include "Calls.h"

#include "host/core/VCreatorBase.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/PluginManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {

using namespace krod;
using Lines = std::vector<std::string>;

class Preferences : public VCreationPreferences {};

/// The plug-in is loaded by a host that gives preferences to every creator.
class Creation : public testing::Test {
protected:
    Creation() {
        calls::changes() = {.preferences = StrongPtr<VCreationPreferences>(new Preferences)};
        manager.load(TOVAR_PLIME);
    }
    ~Creation() override { calls::changes() = {}; }

    StrongPtr<VObject> make(const workbench::CreatorEntry& entry, const std::string& name) {
        return entry.creator->create(name, context);
    }
    /// The calls that an object of that key takes, named "print".
    std::string callsOf(const std::string& key) {
        const auto found = workbench::CreatorRegistry::find(key);
        EXPECT_EQ(found.size(), 1U) << key;
        calls::Record record;
        make(found.front(), "print");
        return record.text();
    }

    workbench::PluginManager manager;
    VCreationContext context;
};

TEST_F(Creation, ofADisplay_isRequiredCallByRequiredCall) {
    EXPECT_EQ(callsOf("Display/CMYK"),
              "trace at 100: VCreator::create(print)\n"
              "VGLRenderObject(print, 0, the creator's preferences)\n"
              "VParameter(int, samples, no preferences)\n"
              "samples.setCreator(print)\n"
              "addParameter(print, samples, 0, samples, int, input)\n"
              "samples.setProperty(max, 16)\n"
              "VParameter(bool, InputVisibility, no preferences)\n"
              "InputVisibility.setCreator(print)\n"
              "addParameter(print, InputVisibility, 10, InputVisibility, bool, input)\n"
              "VParameter(FlagList, options, no preferences)\n"
              "options.setCreator(print)\n"
              "addParameter(print, options, 0, options, FlagList, input)\n"
              "trace at 100: VCreator::create(print) got derived object\n"
              "VObject::setCreator(CMYK)\n"
              "VObject::enableRequestProcessing()\n"
              "VObjectCreation(print, creator of CMYK)\n");
}

TEST_F(Creation, ofATileModule_attachesLimitsAfterTheOutput) {
    EXPECT_EQ(callsOf("Hollywood/PixelBlur"),
              "trace at 100: VCreator::create(print)\n"
              "VParameter(int, width, no preferences)\n"
              "width.setCreator(print)\n"
              "addParameter(print, width, 0, width, int, input)\n"
              "VParameter(double, brightness, no preferences)\n"
              "brightness.setCreator(print)\n"
              "addParameter(print, brightness, 0, brightness, double, input)\n"
              "VParameter(double, sharpness, no preferences)\n"
              "sharpness.setCreator(print)\n"
              "addParameter(print, sharpness, 0, sharpness, double, input)\n"
              "VParameter(StrongPtr<ImageTileProcessor>, ImageProcessor, no preferences)\n"
              "ImageProcessor.setCreator(print)\n"
              "addOutput(ImageProcessor)\n"
              "width.setProperty(min, 1)\n"
              "width.setProperty(max, 20)\n"
              "brightness.setProperty(max, 3.0)\n"
              "sharpness.setProperty(max, 10.0)\n"
              "trace at 100: VCreator::create(print) got derived object\n"
              "VObject::setCreator(PixelBlur)\n"
              "VObject::enableRequestProcessing()\n"
              "VObjectCreation(print, creator of PixelBlur)\n");
}

TEST_F(Creation, ofEachModule_knowsItsCreatorBeforeItTakesRequestsAndIsAnnouncedLast) {
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        const std::string& own = entry.creator->name();
        calls::Record record;
        make(entry, "");
        const Lines found = record.take();
        const Lines required = {"trace at 100: VCreator::create() got derived object",
                                "VObject::setCreator(" + own + ')', "VObject::enableRequestProcessing()",
                                "VObjectCreation(" + own + ", creator of " + own + ')'};
        ASSERT_GT(found.size(), required.size()) << own;
        EXPECT_EQ(found.front(), "trace at 100: VCreator::create()");
        EXPECT_EQ(Lines(found.end() - std::ssize(required), found.end()), required);
    }
}

TEST_F(Creation, ofEachDisplay_givesItsBaseZeroAndTheCreatorsPreferences) {
    std::size_t displays = 0;
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        calls::Record record;
        make(entry, "made");
        const Lines found = record.take();
        const bool isDisplay = entry.creator->keyname().starts_with("Display/");
        EXPECT_EQ(
            std::count(found.begin(), found.end(), "VGLRenderObject(made, 0, the creator's preferences)"),
            isDisplay ? 1 : 0)
            << entry.creator->keyname();
        displays += isDisplay ? 1 : 0;
    }
    EXPECT_EQ(displays, 8U);
}

/// Every parameter is made, given its object and registered before the next one is made.
TEST_F(Creation, ofEachSlot_isThreeStepsForItself) {
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        calls::Record record;
        const auto object = make(entry, "made");
        Lines found = record.take(), required;
        std::erase_if(found, [](const std::string& line) {
            return line.find(".setCreator(") == std::string::npos && !line.starts_with("VParameter(") &&
                   !line.starts_with("addParameter(");
        });
        for (const auto& input : object->slots().inputs()) {
            const std::string type = input.parameter->typeName(), &name = input.name;
            required.push_back("VParameter(" + type + ", " + name + ", no preferences)");
            required.push_back(name + ".setCreator(made)");
            required.push_back("addParameter(made, " + name + ", " + std::to_string(input.expertLevel) +
                               ", " + name + ", " + type + ", input)");
        }
        if (object->slots().output("ImageProcessor")) {
            required.emplace_back(
                "VParameter(StrongPtr<ImageTileProcessor>, ImageProcessor, no preferences)");
            required.emplace_back("ImageProcessor.setCreator(made)");
        }
        EXPECT_EQ(found, required) << entry.creator->keyname();
    }
}

TEST_F(Creation, ofEachSlot_stampsItsValueWhenItIsMade) {
    for (const auto& entry : workbench::CreatorRegistry::entries()) {
        Ageable::Age before = Ageable::GlobalTime();
        const auto object = make(entry, "made");
        for (const auto& input : object->slots().inputs()) {
            EXPECT_GT(input.parameter->value().age(), before)
                << entry.creator->keyname() << ' ' << input.name;
            before = input.parameter->value().age();
        }
        EXPECT_GT(Ageable::GlobalTime(), before);
    }
}

/// All other bits stay as the host has set them while the parameter was registered.
TEST_F(Creation, ofEachSlot_clearsTheBitOfSetValuesOnly) {
    static_assert(VParameter::ValueSet == 8);
    for (const unsigned others : {0U, ~8U}) {
        calls::changes().stateBits = others | 8U;
        for (const auto& entry : workbench::CreatorRegistry::entries()) {
            const auto object = make(entry, "made");
            for (const auto& input : object->slots().inputs())
                EXPECT_EQ(input.parameter->state(), others) << entry.creator->keyname() << ' ' << input.name;
        }
    }
}

} // namespace
