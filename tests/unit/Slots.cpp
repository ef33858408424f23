// SPDX-License-Identifier: Apache-2.0
#include "host/core/VSlotContainer.h"
#include "host/core/VSlotGlobals.h"
#include "host/memory/MemoryException.h"

#include "TestModules.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace krod;

namespace {

template <class T>
StrongPtr<VParameter> parameterOf(const std::string& name, T value) {
    return StrongPtr<VParameter>(new VParameter(makeValue(value), name, nullptr));
}

template <class Slots>
std::string namesOf(const Slots& slots) {
    std::string names;
    for (const auto& slot : slots) names += slot.name + ' ';
    return names;
}

} // namespace

TEST(SlotContainer, Slots_added_areListedInOrderOfDeclaration) {
    VSlotContainer slots;
    EXPECT_TRUE(slots.addInput("samples", 0, parameterOf("samples", 8)));
    EXPECT_TRUE(slots.addInput("options", 10, parameterOf("options", FlagList("-glow", ' '))));
    EXPECT_TRUE(slots.addInput("gamma", 0, parameterOf("gamma", 1.0)));
    slots.addSink("input", "VRenderObject");
    slots.addSink("depth", "double");
    EXPECT_TRUE(slots.addOutput(parameterOf("second", 1)));
    EXPECT_TRUE(slots.addOutput(parameterOf("first", 1)));
    EXPECT_EQ(namesOf(slots.inputs()), "samples options gamma ");
    EXPECT_EQ(slots.inputs()[1].expertLevel, 10);
    EXPECT_EQ(namesOf(slots.sinks()), "input depth ");
    EXPECT_EQ(slots.sinks()[1].typeName, "double");
    EXPECT_EQ(namesOf(slots.outputs()), "second first ");
}

TEST(SlotContainer, Name_twiceInOneList_keepsTheFirst) {
    VSlotContainer slots;
    const auto first = parameterOf("samples", 8);
    EXPECT_TRUE(slots.addInput("samples", 0, first));
    EXPECT_FALSE(slots.addInput("samples", 10, parameterOf("samples", 9)));
    EXPECT_EQ(slots.input("samples"), first);
    EXPECT_EQ(slots.inputs().size(), 1u);
    slots.addSink("input", "double");
    slots.addSink("input", "int");
    ASSERT_EQ(slots.sinks().size(), 1u);
    EXPECT_EQ(slots.sinks()[0].typeName, "double");
    EXPECT_TRUE(slots.addOutput(parameterOf("samples", 1)));
    EXPECT_FALSE(slots.addOutput(parameterOf("samples", 2)));
    EXPECT_EQ(slots.output("samples")->value().text(), "1");
}

TEST(SlotContainer, Name_unknown_givesNothing) {
    const VSlotContainer slots;
    EXPECT_FALSE(slots.input("samples"));
    EXPECT_FALSE(slots.output("samples"));
}

TEST(SlotContainer, NoParameter_isRefused) {
    VSlotContainer slots;
    EXPECT_THROW(slots.addInput("samples", 0, nullptr), PointerException);
    EXPECT_THROW(slots.addOutput(nullptr), PointerException);
}

TEST(SlotContainer, AcceptInfo_ofAType_listsOutputsOfThatTypeOnly) {
    VSlotContainer slots;
    slots.addInput("gamma", 0, parameterOf("gamma", 1.0));
    slots.addOutput(parameterOf("depth", 1.0));
    slots.addOutput(parameterOf("count", 1));
    slots.addOutput(parameterOf("blur", 2.0));
    const AcceptInfoList accepted = slots.getAcceptInfoList(typeid(double));
    ASSERT_EQ(accepted.size(), 2u);
    EXPECT_EQ(accepted[0].output, "depth");
    EXPECT_EQ(accepted[1].output, "blur");
    EXPECT_EQ(accepted[0].typeName, "double");
    EXPECT_EQ(accepted[0].ranking, 0);
    EXPECT_TRUE(slots.getAcceptInfoList(typeid(bool)).empty());
}

TEST(SlotContainer, Outputs_cleared_letGoOfValuesAndCountAsNeverSet) {
    VSlotContainer slots;
    const auto output = parameterOf("code", std::string("main"));
    slots.addOutput(output);
    slots.addInput("gamma", 0, parameterOf("gamma", 2.0));
    const WeakPtr<VValueBase> old(output->getLocalValue(VValuePool()).value);
    slots.clearOutputs();
    EXPECT_TRUE(old.expired());
    EXPECT_EQ(output->value().text(), "");
    EXPECT_FALSE(output->getLocalValue(VValuePool()).set);
    EXPECT_EQ(slots.input("gamma")->value().text(), "2.0");
}

TEST(SlotGlobals, Parameter_added_isInputOrOutputOfTheObject) {
    const StrongPtr<VObject> module(new TestModule("module"));
    const auto gamma = parameterOf("gamma", 1.0);
    const auto depth = parameterOf("depth", 1.0);
    EXPECT_EQ(VSlotGlobals::addParameter(module.get(), "gamma", 10, gamma, typeid(double), true), gamma);
    EXPECT_EQ(VSlotGlobals::addParameter(module.get(), "depth", 0, depth, typeid(double), false), depth);
    EXPECT_EQ(module->slots().input("gamma"), gamma);
    EXPECT_EQ(module->slots().inputs()[0].expertLevel, 10);
    EXPECT_EQ(module->slots().output("depth"), depth);
    EXPECT_FALSE(module->slots().output("gamma"));
}

TEST(SlotGlobals, Parameter_ofAKnownName_givesNothing) {
    const StrongPtr<VObject> module(new TestModule("module"));
    VSlotGlobals::addParameter(module.get(), "gamma", 0, parameterOf("gamma", 1.0), typeid(double), true);
    EXPECT_FALSE(VSlotGlobals::addParameter(module.get(), "gamma", 0, parameterOf("gamma", 2.0),
                                            typeid(double), true));
    EXPECT_EQ(module->slots().input("gamma")->value().text(), "1.0");
}

TEST(SlotGlobals, Parameter_ofAnotherTypeThanItsSlot_isRefused) {
    const StrongPtr<VObject> module(new TestModule("module"));
    EXPECT_THROW(
        VSlotGlobals::addParameter(module.get(), "gamma", 0, parameterOf("gamma", 1), typeid(double), true),
        std::invalid_argument);
    EXPECT_TRUE(module->slots().inputs().empty());
}

TEST(SlotGlobals, NoObject_failsWithTheSlotsName) {
    try {
        VSlotGlobals::addParameter(nullptr, "samples", 0, parameterOf("samples", 8), typeid(int), true);
        FAIL() << "a slot needs an object";
    } catch (const SlotAssertion& failure) {
        EXPECT_STREQ(failure.what(), "Slot \"samples\" was declared for no object.");
    }
    EXPECT_THROW(VSlotGlobals::assertionFail("gamma"), SlotAssertion);
}
