// SPDX-License-Identifier: Apache-2.0
#include "host/core/VParameter.h"

#include "TestModules.h"
#include "host/core/VValuePool.h"
#include "host/memory/MemoryException.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace krod;

namespace {

StrongPtr<VParameter> samples() {
    return StrongPtr<VParameter>(new VParameter(makeValue(8), "samples", nullptr));
}

class PropertyRecord : public VPropertyNotifier {
public:
    void propertyChanged(const std::string& key) override { keys += key + ' '; }
    std::string keys;
};

} // namespace

TEST(Parameter, New_holdsNameTypeAndValue) {
    const auto parameter = samples();
    EXPECT_EQ(parameter->name(), "samples");
    EXPECT_EQ(parameter->typeName(), "int");
    EXPECT_EQ(parameter->value().text(), "8");
    EXPECT_EQ(parameter->state() & VParameter::ValueSet, VParameter::ValueSet);
    EXPECT_FALSE(parameter->creator());
}

TEST(Parameter, NoValue_isRefused) {
    EXPECT_THROW(StrongPtr<VParameter>(new VParameter(nullptr, "samples", nullptr)), PointerException);
}

TEST(Parameter, ValueSetBit_isTheBitOfValueEight) { EXPECT_EQ(VParameter::ValueSet, 8u); }

TEST(Parameter, Read_initialSetAndUnreadable_areThreeStates) {
    const auto parameter = samples();
    parameter->clearState(VParameter::ValueSet);
    VValuePool pool;

    VParameter::LocalValue read = parameter->getLocalValue(pool);
    ASSERT_TRUE(read.value);
    EXPECT_FALSE(read.set);
    EXPECT_EQ(read.value->text(), "8");

    ASSERT_TRUE(parameter->setValueFromText("12"));
    read = parameter->getLocalValue(pool);
    ASSERT_TRUE(read.value);
    EXPECT_TRUE(read.set);
    EXPECT_EQ(read.value->text(), "12");

    pool.makeUnreadable(*parameter);
    read = parameter->getLocalValue(pool);
    EXPECT_FALSE(read.value);
    EXPECT_FALSE(read.set);
    EXPECT_EQ(parameter->value().text(), "12");
}

TEST(Parameter, Text_thatDoesNotParse_leavesValueAndState) {
    const auto parameter = samples();
    parameter->clearState(VParameter::ValueSet);
    const TextResult result = parameter->setValueFromText("many");
    EXPECT_EQ(result.expected, "a whole number from -2147483648 to 2147483647");
    EXPECT_EQ(parameter->value().text(), "8");
    EXPECT_EQ(parameter->state() & VParameter::ValueSet, 0u);
}

TEST(Parameter, OldValue_heldByOthers_staysAsItWas) {
    const auto parameter = samples();
    const StrongPtr<VValueBase> held = parameter->getLocalValue(VValuePool()).value;
    ASSERT_TRUE(parameter->setValueFromText("12"));
    EXPECT_EQ(held->text(), "8");
    EXPECT_EQ(parameter->value().text(), "12");
    EXPECT_GT(parameter->value().age(), held->age());
}

TEST(Parameter, Value_ofAnotherTypeOrNone_isNotTaken) {
    const auto parameter = samples();
    parameter->clearState(VParameter::ValueSet);
    EXPECT_FALSE(parameter->setValue(makeValue(1.5)));
    EXPECT_FALSE(parameter->setValue(nullptr));
    EXPECT_EQ(parameter->value().text(), "8");
    EXPECT_EQ(parameter->state() & VParameter::ValueSet, 0u);
    EXPECT_TRUE(parameter->setValue(makeValue(9)));
    EXPECT_EQ(parameter->value().text(), "9");
    EXPECT_EQ(parameter->state() & VParameter::ValueSet, VParameter::ValueSet);
}

TEST(Parameter, Limits_setAsProperties_areFoundByKey) {
    const auto parameter = samples();
    PropertyRecord record;
    parameter->setProperty("max", makeValue(16), &record);
    parameter->setProperty("min", makeValue(1), nullptr);
    ASSERT_TRUE(parameter->property("max"));
    EXPECT_EQ(parameter->property("max")->text(), "16");
    EXPECT_EQ(parameter->property("min")->text(), "1");
    EXPECT_FALSE(parameter->property("step"));
    EXPECT_EQ(parameter->value().text(), "8");
    EXPECT_EQ(record.keys, "max ");
    parameter->setProperty("max", makeValue(32), &record);
    EXPECT_EQ(parameter->property("max")->text(), "32");
}

TEST(Parameter, Property_ofAnotherType_isRefusedByASentence) {
    const auto parameter = samples();
    PropertyRecord record;
    try {
        parameter->setProperty("max", makeValue(16.0), &record);
        FAIL() << "a limit of another type must be refused";
    } catch (const std::invalid_argument& failure) {
        EXPECT_STREQ(failure.what(), "Property \"max\" of parameter \"samples\" must be of type int, "
                                     "but the value is of type double.");
    }
    EXPECT_FALSE(parameter->property("max"));
    EXPECT_EQ(record.keys, "");
    EXPECT_THROW(parameter->setProperty("max", nullptr, nullptr), PointerException);
}

TEST(Parameter, GlobalValue_taken_isTracedAtLevelFiftyAndCopied) {
    const auto parameter = samples();
    const auto variable = makeValue(12);
    {
        const TraceRecord record(49);
        EXPECT_TRUE(parameter->setGlobalValue(*variable));
        EXPECT_EQ(record.text, "");
    }
    const TraceRecord record(50);
    EXPECT_TRUE(parameter->setGlobalValue(*variable));
    EXPECT_EQ(record.text, "VParameter::setGlobalValue() got variable with 12\n");
    variable->setValue(13);
    EXPECT_EQ(parameter->value().text(), "12");
}

TEST(Parameter, GlobalValue_ofAnotherType_isNeitherTakenNorTraced) {
    const auto parameter = samples();
    const TraceRecord record(100);
    EXPECT_FALSE(parameter->setGlobalValue(*makeValue(true)));
    EXPECT_EQ(record.text, "");
    EXPECT_EQ(parameter->value().text(), "8");
}

TEST(Parameter, Owner_set_isKnownWhileItLives) {
    const auto parameter = samples();
    StrongPtr<VObject> module(new TestModule("cmyk"));
    parameter->setCreator(module.get());
    EXPECT_EQ(parameter->creator(), module);
    module.reset();
    EXPECT_FALSE(parameter->creator());
}
