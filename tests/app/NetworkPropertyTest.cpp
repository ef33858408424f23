// SPDX-License-Identifier: Apache-2.0
// The modules as they ship, through the host: connected, shared, set by code, saved and loaded.
#include "apps/plime/modules/NetworkModules.h"

#include "apps/plime/modules/Provenance.h"
#include "tests/app/ShippedModules.h"
#include "tests/unit/TestModules.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/memory/LivingObjects.h"
#include "workbench/network/NetworkFile.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

namespace workbench {
namespace {

using krod::StrongPtr;

StrongPtr<krod::MSDeferredObjectDisplay> displayNamed(const std::string& key, const std::string& name) {
    krod::VCreationContext context;
    return krod::castStrong<krod::MSDeferredObjectDisplay>(
        shippedModules().one(key).creator->create(name, context));
}

/// What a display says of an input that it does not take; "" when it takes it.
std::string refusal(krod::MSDeferredObjectDisplay& display, const StrongPtr<krod::VGLRenderObject>& input) {
    try {
        display.setInput(input);
        return "";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

TEST(Connection, circleOfDisplays_isRefusedWithItsPath_andTheOldOneStays) {
    const auto a = displayNamed("Display/CMYK", "a"), b = displayNamed("Display/Blurred", "b"),
               c = displayNamed("Display/CurveAdjust", "c");
    EXPECT_EQ(refusal(*a, a), "a: a cannot be its input, since it shows this display itself: a → a");
    ASSERT_EQ(refusal(*b, a), "");
    ASSERT_EQ(refusal(*c, b), "");
    EXPECT_EQ(refusal(*a, c), "a: c cannot be its input, since it shows this display itself: a → c → b → a");
    EXPECT_FALSE(a->input());
    EXPECT_EQ(refusal(*b, c), "b: c cannot be its input, since it shows this display itself: b → c → b");
    EXPECT_EQ(b->input(), a) << "the old connection stays";
    c->setInput({});
    EXPECT_EQ(refusal(*b, c), "");
    EXPECT_EQ(refusal(*a, b), "") << "a is no part of the row any more";
}

TEST(Connection, displayTakesWhatCanBeDrawn_andNoTileModule) {
    const auto display = displayNamed("Display/CMYK", "a");
    krod::VCreationContext context;
    for (const CatalogueEntry& entry : postProcessingModules()) {
        const auto candidate = entry.creator->create("x", context);
        const bool isDrawn = entry.category == "Display";
        EXPECT_EQ(display->accept(krod::WeakPtr<krod::VObject>(candidate)).empty(), !isDrawn) << entry.key;
    }
}

TEST(Connection, inputThatItsOwnerLetsGo_staysAsLongAsItIsShown) {
    const auto shown = displayNamed("Display/CMYK", "shown");
    auto input = displayNamed("Display/Blurred", "input");
    const krod::WeakPtr<krod::VObject> watched(input);
    shown->setInput(input);
    input.reset();
    EXPECT_FALSE(watched.expired());
    shown->setInput({});
    EXPECT_TRUE(watched.expired());
}

TEST(Connection, parametersOfModules_shareOneValue_insideAndAcross) {
    ModuleInstance first(shippedModules().one("Display/Blurred")),
        second(shippedModules().one("Hollywood/PixelBlur"));
    krod::VParameter &width = first.parameter("width"), &exponent = first.parameter("exponent");
    ASSERT_TRUE(exponent.shareValue(width));
    first.setText("width", "9", Limits::Checked);
    EXPECT_EQ(exponent.value().text(), "9.0");
    krod::VParameter& brightness = second.parameter("brightness");
    EXPECT_FALSE(brightness.shareValue(first.parameter("samples"))) << "int and double";
    ASSERT_TRUE(brightness.shareValue(width));
    ASSERT_TRUE(brightness.setValueFromText("2.5"));
    EXPECT_EQ(width.value().text(), "2.5");
    StrongPtr<krod::VValueBase> rest = krod::makeValue(4.0);
    {
        ModuleInstance third(shippedModules().one("Display/Blurred"));
        ASSERT_TRUE(third.parameter("width").setValue(rest));
        ASSERT_TRUE(width.shareValue(third.parameter("width")));
    }
    EXPECT_EQ(width.value().text(), "4.0") << "its module is gone, the value is not";
    EXPECT_EQ(exponent.value().text(), "2.5") << "what it was connected to before goes on";
}

/// The sentence with which the host refuses to let a display compose its text; "" when it does.
std::string refusalToCompose(const std::string& key, const StrongPtr<krod::VValueBase>& width) {
    const auto display = displayNamed(key, "d");
    EXPECT_TRUE(display->slots().input("width")->setValue(width)) << "code may set what it wants";
    EXPECT_EQ(display->slots().input("width")->value().text(), width->text()) << "nothing is clamped";
    try {
        EXPECT_FALSE(captureShader(*display, krod::VValuePool()).empty());
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(ArrayLimit, valuesSetByCode_areRefusedBeforeGigabytesAreComposed) {
    for (const std::string key : {"Display/PixelContours", "Display/ProximityHDR"}) {
        for (const int width : {23, 10'000, std::numeric_limits<int>::max()})
            EXPECT_EQ(refusalToCompose(key, krod::makeValue(width)),
                      key +
                          ": parameter \"width\" would make arrays of more than 2048 elements — expected at "
                          "most 22, got " +
                          std::to_string(width) + '.');
        for (const int width : {std::numeric_limits<int>::min(), -1, 0, 22})
            EXPECT_EQ(refusalToCompose(key, krod::makeValue(width)), "") << width;
    }
    for (const double width : {2049.0, 1e9, 2147483647.0})
        EXPECT_EQ(
            refusalToCompose("Display/Blurred", krod::makeValue(width)),
            "Display/Blurred: parameter \"width\" would make arrays of more than 2048 elements — expected "
            "less than 2049.0, got " +
                krod::VValueTrait<double>::Text(width) + '.');
    for (const double width : {2048.0, 2048.5, std::nextafter(2049.0, 0.0)}) // 2,048 taps
        EXPECT_EQ(refusalToCompose("Display/Blurred", krod::makeValue(width)), "") << width;
    for (const double width : {2147483648.0, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) // three taps
        EXPECT_EQ(refusalToCompose("Display/Blurred", krod::makeValue(width)), "") << width;
}

TEST(ArrayLimit, valueOfAPool_countsToo) {
    const auto display = displayNamed("Display/PixelContours", "d");
    krod::VValuePool pool;
    pool.set(*display->slots().input("width"), krod::makeValue(std::numeric_limits<int>::max()));
    EXPECT_THROW(static_cast<void>(captureShader(*display, pool)), Failure);
    pool.makeUnreadable(*display->slots().input("width"));
    EXPECT_FALSE(captureShader(*display, pool).empty());
}

TEST(Creation, namesOfAllKinds_areNamesAndTracedAsTheyAre) {
    krod::VCreationContext context;
    const TraceRecord record(100);
    for (const std::string& name : {std::string("%n%s%s%x"), std::string(1U << 20U, 'x'),
                                    std::string("\x1b[2J"), std::string("\xff\0x", 3)})
        for (const CatalogueEntry& entry : postProcessingModules()) {
            const auto made = entry.creator->create(name, context);
            ASSERT_TRUE(made) << entry.key;
            EXPECT_EQ(made->name(), name) << entry.key;
        }
    EXPECT_NE(record.text.find("VCreator::create("), std::string::npos);
}

/// Random networks of everything that ships, always the same for one seed.
class RandomNetwork {
public:
    explicit RandomNetwork(unsigned seed) : random(seed) {}

    Network make() {
        const auto entries = postProcessingModules();
        Network network;
        std::vector<std::string> displays;
        for (std::size_t count = 1 + draw(20), i = 0; i < count; ++i) {
            ModuleInstance module(entries[draw(entries.size())]);
            std::string input;
            const bool isDisplay = module.entry().category == "Display";
            if (isDisplay && !displays.empty() && draw(2) == 0) input = displays[draw(displays.size())];
            for (const auto& slot : module.object().slots().inputs()) {
                if (draw(2) == 0) set(*slot.parameter);
                if (draw(8) == 0) module.unset(slot.name);
            }
            const std::string name = Names[draw(std::size(Names))] + std::to_string(i);
            network.objects.push_back(describe(name, module, input));
            if (isDisplay) displays.push_back(name);
        }
        return network;
    }

private:
    std::size_t draw(std::size_t below) { return random() % below; }
    double number() {
        const double scales[] = {1e-300, 1e-6, 1, 1e6, 1e300};
        return std::uniform_real_distribution<double>(-1, 1)(random) * scales[draw(5)];
    }

    void set(krod::VParameter& parameter) {
        using Pair = krod::FixedArray<double, 2>;
        if (parameter.name() == "width") // arrays have their limit
            parameter.setValueFromText(std::to_string(draw(22)));
        else if (parameter.typeName() == "int")
            parameter.setValue(krod::makeValue(static_cast<int>(random())));
        else if (parameter.typeName() == "double")
            parameter.setValue(krod::makeValue(number()));
        else if (parameter.typeName() == "bool")
            parameter.setValue(krod::makeValue(draw(2) == 0));
        else if (parameter.typeName() == "string")
            parameter.setValue(krod::makeValue(text()));
        else if (const auto* flags =
                     dynamic_cast<const krod::TypedValue<krod::FlagList>*>(&parameter.value()))
            parameter.setValueFromText(flipped(flags->value()));
        else
            parameter.setValue(krod::makeValue(Pair(number(), number())));
    }

    std::string flipped(const krod::FlagList& flags) {
        std::string text;
        for (const auto& flag : flags.flags())
            if (draw(3) > 0) text += (draw(2) ? " +" : " -") + flag.name;
        return text;
    }

    std::string text() {
        std::string made;
        for (std::size_t i = draw(40); i-- > 0;) made += Pieces[draw(std::size(Pieces))];
        return made;
    }

    static constexpr const char* Names[] = {"a", "Stra\xc3\x9f\x65 ", "%n%s", "a/b ", "\"\\", "@"};
    static constexpr const char* Pieces[] = {"{",  "}", "\"",          "\\",       "\n", "\r", "\t",
                                             "\f", " ", "void main()", "\xc3\xa9", "%n", "@"};
    std::mt19937 random;
};

TEST(NetworkProperty, randomNetworks_areTheSameAfterSavingAndLoading) {
    static_cast<void>(shippedModules());
    const std::size_t living = livingObjectCount();
    for (unsigned seed = 0; seed < 300; ++seed) {
        const Network network = RandomNetwork(seed).make();
        for (const auto layout : {NetworkLayout::Lines, NetworkLayout::OneLine}) {
            const std::string text = textOf(network, layout);
            const NetworkModules loaded(shippedModules(), networkFromText(text, "net"), "net",
                                        Limits::Unchecked);
            const std::string again = textOf(loaded.network(), layout);
            ASSERT_EQ(again, text) << "seed " << seed;
            ASSERT_EQ(textOf(networkFromText(again, "net"), layout), text) << "seed " << seed;
        }
    }
    EXPECT_EQ(ObjectRegistry::count(), 0U);
    EXPECT_EQ(livingObjectCount(), living);
}

} // namespace
} // namespace workbench
