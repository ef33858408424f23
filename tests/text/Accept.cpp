// SPDX-License-Identifier: Apache-2.0
// What of an object displays can be attached to, and whose creators have a double input.
#include "tests/support/LoadedPlugin.h"

#include "display/AcceptMerge.h"
#include "host/core/VCreatorBase.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Values : public krod::VObject {
public:
    using VObject::VObject;
};

class Shape : public krod::VGLRenderObject {
public:
    explicit Shape(const std::string& name) : VGLRenderObject(name, 0, {}) {}
    void draw(krod::VGLRenderContext& /*context*/) override {}
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {}; }
};

template <class Class>
krod::StrongPtr<krod::VObject> make(const std::string& name) {
    return krod::StrongPtr<krod::VObject>(new Class(name));
}

template <class Value>
void addOutput(krod::VObject& object, const std::string& name, Value value) {
    const krod::StrongPtr<krod::VParameter> made(new krod::VParameter(krod::makeValue(value), name, {}));
    ASSERT_TRUE(object.slots().addOutput(made));
}

/// Two of type double, not in the order of their names, with others around them.
void addOutputs(krod::VObject& object) {
    addOutput(object, "count", 3);
    addOutput(object, "weight", 2.0);
    addOutput(object, "visible", true);
    addOutput(object, "height", 1.0);
}

class Accept : public testing::Test {
protected:
    /// One line per thing that is accepted: ranking, output and type. The object itself has no output.
    std::string accepted(const std::string& key, const krod::WeakPtr<krod::VObject>& object) const {
        std::string lines;
        for (const auto& info : plugin.make<krod::MSDeferredObjectDisplay>(key)->accept(object))
            lines += krod::VValueTrait<double>::Text(info.ranking) + " '" + info.output + "' " +
                     info.typeName + '\n';
        return lines;
    }

    /// The second argument of the creator's template.
    std::string secondInput(const std::string& key) const {
        const auto creator = plugin.make<krod::VObject>(key)->creator();
        const krod::VCreatorBase& object = *creator;
        const std::string type = krod::typenameOf(typeid(object));
        EXPECT_TRUE(type.starts_with("VCreator<")) << type;
        return type.substr(type.rfind(',') + 1);
    }

    support::LoadedPlugin plugin;
    const krod::StrongPtr<krod::VObject> values = make<Values>("values"), shape = make<Shape>("shape");
};

TEST_F(Accept, ProximityHDR_X13_absentAndExpiredObjects_areNothing) {
    EXPECT_EQ(accepted("Display/ProximityHDR", {}), "");
    krod::StrongPtr<krod::VObject> gone = make<Shape>("gone");
    addOutputs(*gone);
    const krod::WeakPtr<krod::VObject> expired(gone);
    EXPECT_NE(accepted("Display/ProximityHDR", expired), "");
    gone.reset();
    EXPECT_EQ(accepted("Display/ProximityHDR", expired), "");
}

TEST_F(Accept, ProximityHDR_X13_renderableObject_isAcceptedAsItself) {
    EXPECT_EQ(accepted("Display/ProximityHDR", shape), "0.0 '' Shape\n");
}

TEST_F(Accept, ProximityHDR_X13_outputsOfTypeDouble_areAcceptedInTheirOrder) {
    addOutputs(*values);
    EXPECT_EQ(accepted("Display/ProximityHDR", values), "0.0 'weight' double\n0.0 'height' double\n");
}

TEST_F(Accept, ProximityHDR_X13_ofEqualRankings_theObjectItselfComesFirst) {
    addOutputs(*shape);
    EXPECT_EQ(accepted("Display/ProximityHDR", shape),
              "0.0 '' Shape\n0.0 'weight' double\n0.0 'height' double\n");
}

TEST_F(Accept, ProximityHDR_X13_objectWithNeither_isNotAccepted) {
    addOutput(*values, "count", 3);
    EXPECT_EQ(accepted("Display/ProximityHDR", values), "");
}

TEST(AcceptMerge, ProximityHDR_X13_lowerRankings_comeFirstAndTiesKeepTheirOrder) {
    std::string outputs;
    for (const krod::AcceptInfo& info : plime::display::mergedByRanking(
             {{"a", "", 0}, {"b", "", 2}}, {{"c", "", 1}, {"d", "", 2}, {"e", "", -1}}))
        outputs += info.output;
    EXPECT_EQ(outputs, "eacbd");
}

TEST_F(Accept, BlurredObject_B10_creator_hasADoubleInput) {
    EXPECT_EQ(secondInput("Display/Blurred"), "double>");
}

TEST_F(Accept, ProximityHDR_X15_creator_hasADoubleInput) {
    EXPECT_EQ(secondInput("Display/ProximityHDR"), "double>");
}

TEST_F(Accept, everyOtherDisplay_hasACreatorWithoutSecondInput) {
    for (const char* key : {"Display/CMYK", "Display/CurveAdjust", "Display/Depth@DisplayDepth",
                            "Display/Depth@HDRObjectDisplay", "Display/HSVAdjust", "Display/PixelContours"})
        EXPECT_EQ(secondInput(key), "void>") << key;
}

TEST_F(Accept, BlurredObject_B10_outputsOfTypeDouble_areNotAccepted) {
    addOutputs(*values);
    addOutputs(*shape);
    EXPECT_EQ(accepted("Display/Blurred", values), "");
    EXPECT_EQ(accepted("Display/Blurred", shape), "0.0 '' Shape\n");
}

TEST_F(Accept, everyOtherDisplay_acceptsRenderableObjectsOnly) {
    addOutputs(*values);
    addOutputs(*shape);
    for (const char* key : {"Display/CMYK", "Display/CurveAdjust", "Display/Depth@DisplayDepth",
                            "Display/Depth@HDRObjectDisplay", "Display/HSVAdjust", "Display/PixelContours"}) {
        EXPECT_EQ(accepted(key, values), "") << key;
        EXPECT_EQ(accepted(key, shape), "0.0 '' Shape\n") << key;
    }
}

} // namespace
